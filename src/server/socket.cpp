#include "server/socket.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "base/files.h"
#include "base/log.h"
#include "base/text.h"

namespace kolum::server {

namespace {

constexpr char kSource[] = "SocketUtil";

constexpr mode_t kEveryUser = 0777;

// Like write(), but writing to a closed peer never ends the host process with SIGPIPE.
ssize_t writeOnce(int fd, const void* buf, std::size_t len) {
  const ssize_t sent = ::send(fd, buf, len, MSG_NOSIGNAL);
  return sent < 0 && errno == ENOTSOCK ? ::write(fd, buf, len) : sent;
}

}  // namespace

void resetErrors(const SocketFields& socket) {
  socket.error = 0;
  socket.code = UNIX_SOCKET_OK;
}

int open(const SocketFields& socket, std::string path) {
  resetErrors(socket);
  if (*path.c_str() == '\0') {
    KOLUM_LOG_AS(kSource, "Open", "socketPath is empty\n");
    return socket.code = UNIX_SOCKET_INVALID_ARGUMENT;
  }
  socket.path = std::move(path);
  socket.descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
  if (socket.descriptor < 0) {
    socket.error = errno;
    KOLUM_LOG_AS(kSource, "Open", "create socket fail, errno=%d, strerror=%s\n", socket.error,
                 strerror(socket.error));
    return socket.code = UNIX_SOCKET_CREATE_FAILED;
  }
  socket.address = {};
  socket.address.sun_family = AF_UNIX;
  kolum::copyText(socket.address.sun_path, socket.path.c_str());
  return UNIX_SOCKET_OK;
}

int bind(const SocketFields& socket) {
  resetErrors(socket);
  const char* file = socket.path.c_str();
  if (exists(file) && std::remove(file) != 0) {
    socket.error = errno;
    KOLUM_LOG_AS(kSource, "Bind", "remove() sockFilePath %s fail, errno=%d, strerror=%s\n", file,
                 socket.error, strerror(socket.error));
    return socket.code = UNIX_SOCKET_REMOVE_FAILED;
  }
  if (::bind(socket.descriptor, reinterpret_cast<const sockaddr*>(&socket.address),
             sizeof socket.address) != 0) {
    socket.error = errno;
    KOLUM_LOG_AS(kSource, "Bind", "server bind() fail, errno=%d, strerror=%s\n", socket.error,
                 strerror(socket.error));
    return socket.code = UNIX_SOCKET_BIND_FAILED;
  }
  // Only a warning: a server whose file some users cannot open still serves the others.
  if (chmod(file, kEveryUser) != 0) {
    socket.error = errno;
    KOLUM_LOG_AS(kSource, "Bind", "chmod %s fail, errno=%d strerror=%s\n", file, socket.error,
                 strerror(socket.error));
  }
  return UNIX_SOCKET_OK;
}

int listen(const SocketFields& socket, int backlog) {
  resetErrors(socket);
  if (backlog < 1) {
    KOLUM_LOG_AS(kSource, "Listen", "listen invalid : %d\n", backlog);
    return socket.code = UNIX_SOCKET_INVALID_ARGUMENT;
  }
  if (::listen(socket.descriptor, backlog) != 0) {
    socket.error = errno;
    KOLUM_LOG_AS(kSource, "Listen", "listen() failed, errno=%d, strerror=%s\n", socket.error,
                 strerror(socket.error));
    return socket.code = UNIX_SOCKET_LISTEN_FAILED;
  }
  socket.state = kListening;
  return UNIX_SOCKET_OK;
}

// The only operation that continues after an interruption: a server has to survive signals, while a
// client's Read and Write pass every failure to the caller.
int accept(const SocketFields& socket) {
  resetErrors(socket);
  for (;;) {
    const int fd = ::accept(socket.descriptor, nullptr, nullptr);
    if (fd >= 0) return fd;
    socket.error = errno;
    if (socket.error <= 0 || socket.error == EINTR) continue;
    KOLUM_LOG_AS(kSource, "Accept", "accept() fail, errno=%d, strerror=%s\n", socket.error,
                 strerror(socket.error));
    socket.code = UNIX_SOCKET_ACCEPT_FAILED;
    return -1;
  }
}

int connect(const SocketFields& socket, long seconds, long microseconds) {
  resetErrors(socket);
  if (seconds < 0 || microseconds < 0) {
    KOLUM_LOG_AS(kSource, "Connect", "invalid timeout : sec:%d, micro sec :%d\n",
                 static_cast<int>(seconds), static_cast<int>(microseconds));
    return socket.code = UNIX_SOCKET_INVALID_ARGUMENT;
  }
  const timeval timeOut{.tv_sec = seconds, .tv_usec = microseconds};
  for (const int direction : {SO_RCVTIMEO, SO_SNDTIMEO}) {
    if (setsockopt(socket.descriptor, SOL_SOCKET, direction, &timeOut, sizeof timeOut) == 0)
      continue;
    socket.error = errno;
    KOLUM_LOG_AS(kSource, "Connect", "setsockopt() timeout fail, errno=%d, strerror=%s\n",
                 socket.error, strerror(socket.error));
    return socket.code = UNIX_SOCKET_TIME_OUT_FAILED;
  }
  if (::connect(socket.descriptor, reinterpret_cast<const sockaddr*>(&socket.address),
                sizeof socket.address) != 0) {
    socket.error = errno;
    KOLUM_LOG_AS(kSource, "Connect", "connect() fail, errno=%d, strerror=%s\n", socket.error,
                 strerror(socket.error));
    return socket.code = UNIX_SOCKET_CONNECT_FAILED;
  }
  socket.state = kConnected;
  return UNIX_SOCKET_OK;
}

// Read and Write store no errno: after a failure getErrorCode gives 9 and getErrno 0. Hosts
// distinguish a failed exchange from a failed connection by it.
int read(const SocketFields& socket, void* buffer, unsigned long length) {
  resetErrors(socket);
  if (socket.descriptor < 0) {
    KOLUM_LOG_AS(kSource, "Read", "invalid read, no socket to read.\n");
    socket.code = UNIX_SOCKET_READ_WRITE_FAILED;
    return -1;
  }
  if (length > 0) std::memset(buffer, 0, length);
  const ssize_t count = ::read(socket.descriptor, buffer, length);
  if (count < 0) {
    const int error = errno;
    KOLUM_LOG_AS(kSource, "Read", "read() failed, socket=%d, errno=%d ,strerror=%s\n",
                 socket.descriptor, error, strerror(error));
    socket.code = UNIX_SOCKET_READ_WRITE_FAILED;
  }
  return static_cast<int>(count);  // fits: the kernel transfers at most 2 GiB at a time
}

int write(const SocketFields& socket, const void* buffer, unsigned long length) {
  resetErrors(socket);
  if (socket.descriptor < 0) {
    KOLUM_LOG_AS(kSource, "Write", "invalid write, no socket to write.\n");
    socket.code = UNIX_SOCKET_READ_WRITE_FAILED;
    return -1;
  }
  const ssize_t count = writeOnce(socket.descriptor, buffer, length);
  if (count < 0) {
    const int error = errno;
    KOLUM_LOG_AS(kSource, "Write", "write() failed, socket=%d, errno=%d ,strerror=%s\n",
                 socket.descriptor, error, strerror(error));
    socket.code = UNIX_SOCKET_READ_WRITE_FAILED;
  }
  return static_cast<int>(count);
}

int close(const SocketFields& socket) {
  if (socket.descriptor < 1) return UNIX_SOCKET_OK;
  if (::close(socket.descriptor) != 0) {
    socket.error = errno;
    socket.code = UNIX_SOCKET_CLOSE_FAILED;
    KOLUM_LOG_AS(kSource, "Close", "close m_socketFd %d fail, errno=%d, strerror=%s\n",
                 socket.descriptor, socket.error, strerror(socket.error));
    return 1;
  }
  socket.descriptor = -1;
  socket.state = kNone;
  return UNIX_SOCKET_OK;
}

// Descriptor 0 counts as no socket, here and in close(): an object never closes its host's standard
// input.
Socket::~Socket() {
  if (descriptor_ > 0) ::close(descriptor_);
}

}  // namespace kolum::server
