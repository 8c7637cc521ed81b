// Access to the fields of a UnixSocket for its operations.
#ifndef KOLUM_API_UNIX_SOCKET_ACCESS_H
#define KOLUM_API_UNIX_SOCKET_ACCESS_H

#include <kolum/socket.h>

#include "server/socket.h"

namespace MediaLibrary::LUM {

struct UnixSocketAccess {
  static kolum::server::SocketFields of(UnixSocket& socket) {
    return {socket.m_sockAddr,  socket.m_socketFd, socket.m_errno,
            socket.m_errorCode, socket.m_state,    socket.m_socketPath};
  }
};

}  // namespace MediaLibrary::LUM

#endif
