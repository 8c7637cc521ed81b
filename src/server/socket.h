// Local stream sockets: the operations of the public UnixSocket, and a socket of the library's own.
#ifndef KOLUM_SERVER_SOCKET_H
#define KOLUM_SERVER_SOCKET_H

#include <kolum/socket.h>
#include <sys/un.h>

#include <string>

namespace kolum::server {

enum SocketState : int { kNone = 0, kConnected = 1, kAccepted = 2, kListening = 3 };

// References to a socket's fields, wherever they are stored.
struct SocketFields {
  sockaddr_un& address;
  int& descriptor;
  int& error;  // the system's errno
  int& code;
  int& state;
  std::string& path;
};

// <kolum/socket.h> describes what each does and returns.
void resetErrors(const SocketFields& socket);
int open(const SocketFields& socket, std::string path);
int bind(const SocketFields& socket);
int listen(const SocketFields& socket, int backlog);
// The connection's descriptor; negative if there is none.
int accept(const SocketFields& socket);
int connect(const SocketFields& socket, long seconds, long microseconds);
int read(const SocketFields& socket, void* buffer, unsigned long length);
int write(const SocketFields& socket, const void* buffer, unsigned long length);
int close(const SocketFields& socket);

// A client's socket, closed on destruction.
class Socket {
 public:
  Socket() = default;
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;
  ~Socket();

  SocketFields fields() { return {address_, descriptor_, error_, code_, state_, path_}; }

 private:
  sockaddr_un address_ = {};
  int descriptor_ = -1;
  int error_ = 0;
  int code_ = UNIX_SOCKET_OK;
  int state_ = kNone;
  std::string path_;
};

}  // namespace kolum::server

#endif
