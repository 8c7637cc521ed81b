/*
 * One local (AF_UNIX) stream socket, for both ends of the link to the media-library server.
 *
 *   client: Open, Connect, then Write and Read as needed, Close (or destruction)
 *   server: Open, Bind, Listen, then Accept in a loop
 *
 * The class adds no framing: a Read or a Write is one system call, so callers must handle short
 * counts. getErrorCode (the class's own code) and getErrno (the system's) report what went wrong in
 * the last operation. Every failure is also logged, except those of the destructor. Nothing throws.
 *
 * An object belongs to one thread at a time; separate objects are independent.
 */
#ifndef KOLUM_SOCKET_H
#define KOLUM_SOCKET_H

#include <kolum/export.h>

/* Error codes of UnixSocket's operations. */
enum {
  UNIX_SOCKET_OK = 0,
  UNIX_SOCKET_INVALID_ARGUMENT = 2,
  UNIX_SOCKET_CREATE_FAILED = 3,     /* socket() failed */
  UNIX_SOCKET_BIND_FAILED = 4,       /* bind() failed */
  UNIX_SOCKET_LISTEN_FAILED = 5,     /* listen() failed */
  UNIX_SOCKET_ACCEPT_FAILED = 6,     /* accept() failed */
  UNIX_SOCKET_CONNECT_FAILED = 7,    /* connect() failed */
  UNIX_SOCKET_TIME_OUT_FAILED = 8,   /* a time-out could not be set */
  UNIX_SOCKET_READ_WRITE_FAILED = 9, /* no socket, or read() or write() failed */
  UNIX_SOCKET_REMOVE_FAILED = 10,    /* an old socket file could not be removed */
  UNIX_SOCKET_CLOSE_FAILED = 11      /* close() failed */
};

#ifdef __cplusplus

#include <sys/un.h>

#include <string>

namespace MediaLibrary::LUM {

class KOLUM_EXPORT UnixSocket {
 public:
  /* No socket yet. */
  UnixSocket() noexcept;

  /* Takes ownership of FD, a connected descriptor (Accept makes its results this way). */
  explicit UnixSocket(int fd) noexcept;

  /* Closes the descriptor if it is above 0, silently. The socket file of a server stays. */
  ~UnixSocket();

  UnixSocket(const UnixSocket&) = delete;
  UnixSocket& operator=(const UnixSocket&) = delete;

  /* The errno of the last failed operation, 0 when there is none. A failed Read or Write stores
     none. An Accept that succeeded after an interruption leaves EINTR. */
  int getErrno() noexcept;

  /* The code of the last operation, UNIX_SOCKET_*. A successful Close leaves the code as it was. */
  int getErrorCode() noexcept;

  /* Sets both error values to 0; every operation except Close begins with it. */
  void resetErrorCodes() noexcept;

  /* True when connected, accepted or listening, with a descriptor above 0. */
  bool isValid() noexcept;

  /* Creates the socket and stores SOCKETPATH for Bind and Connect. The address holds at most 107
     bytes: a longer path is cut there silently. Touches no file. An object that is already open
     loses its earlier descriptor without closing it. Returns UNIX_SOCKET_OK,
     UNIX_SOCKET_INVALID_ARGUMENT when the path is empty (nothing changes), or
     UNIX_SOCKET_CREATE_FAILED. */
  int Open(std::string socketPath) noexcept;

  /* Binds to the path of Open, after removing what exists there, and gives every user access to
     the socket file (mode 0777; a failure of that is only logged).
     Returns UNIX_SOCKET_OK, UNIX_SOCKET_REMOVE_FAILED or UNIX_SOCKET_BIND_FAILED. */
  int Bind() noexcept;

  /* Listens with room for BACKLOG waiting connections (at least 1).
     Returns UNIX_SOCKET_OK, UNIX_SOCKET_INVALID_ARGUMENT for a smaller BACKLOG, or
     UNIX_SOCKET_LISTEN_FAILED. */
  int Listen(int backlog) noexcept;

  /* Waits, without a time limit, for the next connection; interruptions by signals do not end the
     wait. Returns the connection, which the caller deletes, or null: accept() failed
     (UNIX_SOCKET_ACCEPT_FAILED), or memory ran out (UNIX_SOCKET_OK; the accepted descriptor is then
     left open). */
  UnixSocket* Accept() noexcept;

  /* Connects to the path of Open. SEC seconds and USEC microseconds (below 1,000,000), neither
     negative, limit every later read and write; both 0 means no limit. Connecting itself is limited
     only by what the system does for local sockets.
     Returns UNIX_SOCKET_OK, UNIX_SOCKET_INVALID_ARGUMENT for a negative time,
     UNIX_SOCKET_TIME_OUT_FAILED or UNIX_SOCKET_CONNECT_FAILED. */
  int Connect(long sec, long usec) noexcept;

  /* Reads at most LEN bytes into BUF, which holds LEN bytes and is zeroed first, with one read().
     Returns the count, 0 when the peer has closed; negative when there is no socket (BUF is then
     untouched) or the read failed or took too long (UNIX_SOCKET_READ_WRITE_FAILED). */
  int Read(void* buf, unsigned long len) noexcept;

  /* Writes the LEN bytes at BUF with one system call. A peer that has closed is a failure, never a
     SIGPIPE.
     Returns the count, which may be less than LEN; negative as for Read. BUF is only read. */
  int Write(void* buf, unsigned long len) noexcept;

  /* Closes the descriptor; does nothing without one (descriptor 0 counts as none).
     Returns 0, or 1 when close() failed (UNIX_SOCKET_CLOSE_FAILED is the code; descriptor and state
     stay). */
  int Close() noexcept;

 private:
  friend struct UnixSocketAccess; /* gives its operations access to the fields */
  friend struct UnixSocketFields; /* lets tests inspect them */

  sockaddr_un m_sockAddr;   /* filled by Open, passed on whole */
  int m_socketFd;           /* -1: none */
  int m_errno;              /* see getErrno */
  int m_errorCode;          /* see getErrorCode */
  int m_state;              /* 0 none or closed, 1 connected, 2 accepted, 3 listening */
  std::string m_socketPath; /* as given to Open, uncut */
};

}  // namespace MediaLibrary::LUM

#endif

#endif
