// Messages between a host, the nursery that it starts, and the workers that the nursery makes.
#ifndef KOLUM_ISOLATION_MESSAGE_H
#define KOLUM_ISOLATION_MESSAGE_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/descriptor.h"

namespace kolum::isolation {

// Protections of a worker, each of which a kernel or a container may lack.
enum Layer : std::uint32_t {
  kNoNewPrivileges = 1U << 0,
  kUnprivileged = 1U << 1,      // not root, no capabilities
  kFileSystemClosed = 1U << 2,  // Landlock
  kSystemCalls = 1U << 3,       // seccomp
  kLimits = 1U << 4,            // memory, processor time, files
  kNotDumpable = 1U << 5,
};
inline constexpr std::uint32_t kAllLayers = (1U << 6) - 1;

// Answers hold no file contents; the largest are long lists of tags.
inline constexpr std::size_t kLongestMessage = std::size_t{4} << 20;

// A worker that a file has taken over could lie about this many others. Both sides keep to it.
inline constexpr std::uint64_t kMostRequests = 1000;

// What a worker says first.
struct Hello {
  char version[32];  // kVersion
  std::uint32_t layers;
};

// What the nursery answers for each worker asked for.
struct Birth {
  std::int32_t process;  // 0 if there is none
  std::int32_t error;    // errno
};

// Precedes each request and each answer.
struct Header {
  std::uint64_t number;     // of the request, also in its answer
  std::uint32_t size;       // of the bytes that follow
  std::uint32_t isLast;     // in an answer: the worker takes no further requests
  std::uint32_t processor;  // in a request: where the host runs
  std::uint32_t unused;
};

// The version of all that is sent. Libraries and workers of different versions refuse each other.
inline constexpr char kVersion[sizeof(Hello::version)] = KOLUM_ISOLATION_VERSION;

struct SocketPair {
  Descriptor ours;
  Descriptor theirs;
};
// Closed in programs that are started. Empty if there are no descriptors left.
std::optional<SocketPair> socketPair();

using Deadline = std::optional<std::chrono::steady_clock::time_point>;

enum class Transfer { kDone, kEnded, kTimeOver };

// Sends all of both, and a descriptor if it is not negative. Never raises SIGPIPE.
Transfer send(int socket, std::span<const std::uint8_t> first, std::span<const std::uint8_t> second,
              int descriptor, Deadline deadline);

// Receives exactly OUT, and a descriptor that comes along if DESCRIPTOR is not null. The kernel
// closes any other.
Transfer receive(int socket, std::span<std::uint8_t> out, Descriptor* descriptor,
                 Deadline deadline);

template <typename Plain>
std::span<const std::uint8_t> bytesOf(const Plain& value) {
  return {reinterpret_cast<const std::uint8_t*>(&value), sizeof value};
}
template <typename Plain>
std::span<std::uint8_t> writableBytesOf(Plain& value) {
  return {reinterpret_cast<std::uint8_t*>(&value), sizeof value};
}

}  // namespace kolum::isolation

#endif
