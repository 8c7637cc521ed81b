#include <kolum/socket.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <utility>

#include "support/log.h"
#include "support/text.h"

namespace MediaLibrary::LUM {

namespace {

constexpr char kSource[] = "SocketUtil";

enum State : int { kNone = 0, kConnected = 1, kAccepted = 2, kListening = 3 };

constexpr mode_t kEveryUser = 0777;

bool exists(const char* path) {
  struct stat status {};
  return stat(path, &status) == 0;
}

// As write(), but a peer that has closed never ends the host process with SIGPIPE.
ssize_t writeOnce(int fd, const void* buf, std::size_t len) {
  const ssize_t sent = send(fd, buf, len, MSG_NOSIGNAL);
  return sent < 0 && errno == ENOTSOCK ? write(fd, buf, len) : sent;
}

}  // namespace

UnixSocket::UnixSocket() noexcept
    : m_sockAddr{}, m_socketFd(-1), m_errno(0), m_errorCode(UNIX_SOCKET_OK), m_state(kNone) {}

UnixSocket::UnixSocket(int fd) noexcept
    : m_sockAddr{}, m_socketFd(fd), m_errno(0), m_errorCode(UNIX_SOCKET_OK), m_state(kAccepted) {}

// Here, in isValid and in Close, descriptor 0 counts as no socket. That is wanted: an object never
// closes the standard input of its host.
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
  m_errno = 0;
  m_errorCode = UNIX_SOCKET_OK;
}

bool UnixSocket::isValid() noexcept {
  return m_state != kNone && m_socketFd > 0;
}

int UnixSocket::Open(std::string socketPath) noexcept {
  resetErrorCodes();
  if (*socketPath.c_str() == '\0') {
    KOLUM_LOG(kSource, "socketPath is empty\n");
    return m_errorCode = UNIX_SOCKET_INVALID_ARGUMENT;
  }
  m_socketPath = std::move(socketPath);
  m_socketFd = socket(AF_UNIX, SOCK_STREAM, 0);
  if (m_socketFd < 0) {
    m_errno = errno;
    KOLUM_LOG(kSource, "create socket fail, errno=%d, strerror=%s\n", m_errno, strerror(m_errno));
    return m_errorCode = UNIX_SOCKET_CREATE_FAILED;
  }
  m_sockAddr = {};
  m_sockAddr.sun_family = AF_UNIX;
  kolum::copyText(m_sockAddr.sun_path, m_socketPath.c_str());
  return UNIX_SOCKET_OK;
}

int UnixSocket::Bind() noexcept {
  resetErrorCodes();
  const char* path = m_socketPath.c_str();
  if (exists(path) && std::remove(path) != 0) {
    m_errno = errno;
    KOLUM_LOG(kSource, "remove() sockFilePath %s fail, errno=%d, strerror=%s\n", path, m_errno,
              strerror(m_errno));
    return m_errorCode = UNIX_SOCKET_REMOVE_FAILED;
  }
  if (bind(m_socketFd, reinterpret_cast<const sockaddr*>(&m_sockAddr), sizeof m_sockAddr) != 0) {
    m_errno = errno;
    KOLUM_LOG(kSource, "server bind() fail, errno=%d, strerror=%s\n", m_errno, strerror(m_errno));
    return m_errorCode = UNIX_SOCKET_BIND_FAILED;
  }
  // Only a warning, and that is wanted: a server whose file some users cannot open still serves the
  // others.
  if (chmod(path, kEveryUser) != 0) {
    m_errno = errno;
    KOLUM_LOG(kSource, "chmod %s fail, errno=%d strerror=%s\n", path, m_errno, strerror(m_errno));
  }
  return UNIX_SOCKET_OK;
}

int UnixSocket::Listen(int backlog) noexcept {
  resetErrorCodes();
  if (backlog < 1) {
    KOLUM_LOG(kSource, "listen invalid : %d\n", backlog);
    return m_errorCode = UNIX_SOCKET_INVALID_ARGUMENT;
  }
  if (listen(m_socketFd, backlog) != 0) {
    m_errno = errno;
    KOLUM_LOG(kSource, "listen() failed, errno=%d, strerror=%s\n", m_errno, strerror(m_errno));
    return m_errorCode = UNIX_SOCKET_LISTEN_FAILED;
  }
  m_state = kListening;
  return UNIX_SOCKET_OK;
}

// The one operation that goes on after an interruption: a server has to outlive signals, while a
// client's Read and Write hand every failure to the caller.
UnixSocket* UnixSocket::Accept() noexcept {
  resetErrorCodes();
  for (;;) {
    const int fd = accept(m_socketFd, nullptr, nullptr);
    if (fd >= 0) return new (std::nothrow) UnixSocket(fd);
    m_errno = errno;
    if (m_errno <= 0 || m_errno == EINTR) continue;
    KOLUM_LOG(kSource, "accept() fail, errno=%d, strerror=%s\n", m_errno, strerror(m_errno));
    m_errorCode = UNIX_SOCKET_ACCEPT_FAILED;
    return nullptr;
  }
}

int UnixSocket::Connect(long sec, long usec) noexcept {
  resetErrorCodes();
  if (sec < 0 || usec < 0) {
    KOLUM_LOG(kSource, "invalid timeout : sec:%d, micro sec :%d\n", static_cast<int>(sec),
              static_cast<int>(usec));
    return m_errorCode = UNIX_SOCKET_INVALID_ARGUMENT;
  }
  const timeval timeOut{.tv_sec = sec, .tv_usec = usec};
  for (const int direction : {SO_RCVTIMEO, SO_SNDTIMEO}) {
    if (setsockopt(m_socketFd, SOL_SOCKET, direction, &timeOut, sizeof timeOut) == 0) continue;
    m_errno = errno;
    KOLUM_LOG(kSource, "setsockopt() timeout fail, errno=%d, strerror=%s\n", m_errno,
              strerror(m_errno));
    return m_errorCode = UNIX_SOCKET_TIME_OUT_FAILED;
  }
  if (connect(m_socketFd, reinterpret_cast<const sockaddr*>(&m_sockAddr), sizeof m_sockAddr) != 0) {
    m_errno = errno;
    KOLUM_LOG(kSource, "connect() fail, errno=%d, strerror=%s\n", m_errno, strerror(m_errno));
    return m_errorCode = UNIX_SOCKET_CONNECT_FAILED;
  }
  m_state = kConnected;
  return UNIX_SOCKET_OK;
}

// Read and Write keep no errno: after their failures getErrorCode gives 9 and getErrno 0. That is
// wanted, hosts tell by it a failed exchange from a failed connection.
int UnixSocket::Read(void* buf, unsigned long len) noexcept {
  resetErrorCodes();
  if (m_socketFd < 0) {
    KOLUM_LOG(kSource, "invalid read, no socket to read.\n");
    m_errorCode = UNIX_SOCKET_READ_WRITE_FAILED;
    return -1;
  }
  if (len > 0) std::memset(buf, 0, len);
  const ssize_t count = read(m_socketFd, buf, len);
  if (count < 0) {
    const int error = errno;
    KOLUM_LOG(kSource, "read() failed, socket=%d, errno=%d ,strerror=%s\n", m_socketFd, error,
              strerror(error));
    m_errorCode = UNIX_SOCKET_READ_WRITE_FAILED;
  }
  return static_cast<int>(count);  // fits: the kernel moves at most 2 GiB at a time
}

int UnixSocket::Write(void* buf, unsigned long len) noexcept {
  resetErrorCodes();
  if (m_socketFd < 0) {
    KOLUM_LOG(kSource, "invalid write, no socket to write.\n");
    m_errorCode = UNIX_SOCKET_READ_WRITE_FAILED;
    return -1;
  }
  const ssize_t count = writeOnce(m_socketFd, buf, len);
  if (count < 0) {
    const int error = errno;
    KOLUM_LOG(kSource, "write() failed, socket=%d, errno=%d ,strerror=%s\n", m_socketFd, error,
              strerror(error));
    m_errorCode = UNIX_SOCKET_READ_WRITE_FAILED;
  }
  return static_cast<int>(count);
}

int UnixSocket::Close() noexcept {
  if (m_socketFd < 1) return UNIX_SOCKET_OK;
  if (close(m_socketFd) != 0) {
    m_errno = errno;
    m_errorCode = UNIX_SOCKET_CLOSE_FAILED;
    KOLUM_LOG(kSource, "close m_socketFd %d fail, errno=%d, strerror=%s\n", m_socketFd, m_errno,
              strerror(m_errno));
    return 1;
  }
  m_socketFd = -1;
  m_state = kNone;
  return UNIX_SOCKET_OK;
}

}  // namespace MediaLibrary::LUM
