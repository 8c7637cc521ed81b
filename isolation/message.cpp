#include "isolation/message.h"

#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace kolum::isolation {

namespace {

// The alignment leaves room for a second descriptor, which nobody would take: a receiver offers the
// kernel no more than the length of one.
constexpr std::size_t kControlSize = CMSG_SPACE(sizeof(int));
constexpr std::size_t kControlLength = CMSG_LEN(sizeof(int));

struct alignas(cmsghdr) Control {
  char bytes[kControlSize] = {};
};

void attach(msghdr& message, Control& control, int descriptor) {
  message.msg_control = control.bytes;
  message.msg_controllen = sizeof control.bytes;
  cmsghdr* header = CMSG_FIRSTHDR(&message);
  header->cmsg_level = SOL_SOCKET;
  header->cmsg_type = SCM_RIGHTS;
  header->cmsg_len = CMSG_LEN(sizeof descriptor);
  std::memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
}

Descriptor attached(msghdr& message) {
  const cmsghdr* header = CMSG_FIRSTHDR(&message);
  if (header == nullptr || header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS ||
      header->cmsg_len != CMSG_LEN(sizeof(int)))
    return {};
  int descriptor = -1;
  std::memcpy(&descriptor, CMSG_DATA(header), sizeof descriptor);
  return Descriptor(descriptor);
}

// Lets the next operation of a socket wait until the deadline. False if that is over.
bool limitWait(int socket, int option, Deadline deadline) {
  if (!deadline) return true;
  const auto left = std::chrono::duration_cast<std::chrono::microseconds>(
      *deadline - std::chrono::steady_clock::now());
  if (left.count() <= 0) return false;
  const timeval wait = {.tv_sec = left.count() / 1'000'000, .tv_usec = left.count() % 1'000'000};
  return setsockopt(socket, SOL_SOCKET, option, &wait, sizeof wait) == 0;
}

Transfer failureOf(int error) {
  return error == EAGAIN || error == EWOULDBLOCK ? Transfer::kTimeOver : Transfer::kEnded;
}

}  // namespace

std::optional<SocketPair> socketPair() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return std::nullopt;
  return SocketPair{Descriptor(ends[0]), Descriptor(ends[1])};
}

Transfer send(int socket, std::span<const std::uint8_t> first, std::span<const std::uint8_t> second,
              int descriptor, Deadline deadline) {
  std::size_t done = 0;
  const std::size_t size = first.size() + second.size();
  while (done < size) {
    if (!limitWait(socket, SO_SNDTIMEO, deadline)) return Transfer::kTimeOver;
    const auto begin = first.subspan(std::min(done, first.size()));
    const auto end = second.subspan(done > first.size() ? done - first.size() : 0);
    iovec parts[] = {{const_cast<std::uint8_t*>(begin.data()), begin.size()},
                     {const_cast<std::uint8_t*>(end.data()), end.size()}};
    msghdr message = {};
    message.msg_iov = parts;
    message.msg_iovlen = std::size(parts);
    Control control;
    if (done == 0 && descriptor >= 0) attach(message, control, descriptor);
    const ssize_t sent = sendmsg(socket, &message, MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent < 0) return failureOf(errno);
    done += static_cast<std::size_t>(sent);
  }
  return Transfer::kDone;
}

Transfer receive(int socket, std::span<std::uint8_t> out, Descriptor* descriptor,
                 Deadline deadline) {
  while (!out.empty()) {
    if (!limitWait(socket, SO_RCVTIMEO, deadline)) return Transfer::kTimeOver;
    iovec part = {out.data(), out.size()};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    Control control;
    if (descriptor != nullptr) {
      message.msg_control = control.bytes;
      message.msg_controllen = kControlLength;
    }
    const ssize_t got = recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return failureOf(errno);
    if (Descriptor came = attached(message); descriptor != nullptr && came.isOpen())
      *descriptor = std::move(came);
    if (got == 0) return Transfer::kEnded;
    out = out.subspan(static_cast<std::size_t>(got));
  }
  return Transfer::kDone;
}

}  // namespace kolum::isolation
