#include <kolum/socket.h>
#include <unistd.h>

#include <new>
#include <utility>

#include "api/unix_socket_access.h"

namespace server = kolum::server;

namespace MediaLibrary::LUM {

UnixSocket::UnixSocket() noexcept
    : m_sockAddr{},
      m_socketFd(-1),
      m_errno(0),
      m_errorCode(UNIX_SOCKET_OK),
      m_state(server::kNone) {}

UnixSocket::UnixSocket(int fd) noexcept
    : m_sockAddr{},
      m_socketFd(fd),
      m_errno(0),
      m_errorCode(UNIX_SOCKET_OK),
      m_state(server::kAccepted) {}

// Here and in isValid, descriptor 0 counts as no socket: an object never closes its host's standard
// input.
UnixSocket::~UnixSocket() {
  if (m_socketFd > 0) close(m_socketFd);
}

int UnixSocket::getErrno() noexcept {
  return m_errno;
}

int UnixSocket::getErrorCode() noexcept {
  return m_errorCode;
}

void UnixSocket::resetErrorCodes() noexcept {
  server::resetErrors(UnixSocketAccess::of(*this));
}

bool UnixSocket::isValid() noexcept {
  return m_state != server::kNone && m_socketFd > 0;
}

int UnixSocket::Open(std::string socketPath) noexcept {
  return server::open(UnixSocketAccess::of(*this), std::move(socketPath));
}

int UnixSocket::Bind() noexcept {
  return server::bind(UnixSocketAccess::of(*this));
}

int UnixSocket::Listen(int backlog) noexcept {
  return server::listen(UnixSocketAccess::of(*this), backlog);
}

UnixSocket* UnixSocket::Accept() noexcept {
  const int descriptor = server::accept(UnixSocketAccess::of(*this));
  return descriptor >= 0 ? new (std::nothrow) UnixSocket(descriptor) : nullptr;
}

int UnixSocket::Connect(long sec, long usec) noexcept {
  return server::connect(UnixSocketAccess::of(*this), sec, usec);
}

int UnixSocket::Read(void* buf, unsigned long len) noexcept {
  return server::read(UnixSocketAccess::of(*this), buf, len);
}

int UnixSocket::Write(void* buf, unsigned long len) noexcept {
  return server::write(UnixSocketAccess::of(*this), buf, len);
}

int UnixSocket::Close() noexcept {
  return server::close(UnixSocketAccess::of(*this));
}

}  // namespace MediaLibrary::LUM
