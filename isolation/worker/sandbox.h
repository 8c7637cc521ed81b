// What a worker gives up before it reads anything.
#ifndef KOLUM_ISOLATION_WORKER_SANDBOX_H
#define KOLUM_ISOLATION_WORKER_SANDBOX_H

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace kolum::isolation {

// Root, capabilities, and the way to get them back. The rest can be given up without them. Returns
// the layers that are active (Layer in message.h).
std::uint32_t dropPrivileges();

// Everything but reading from open descriptors, answering, and MEMORY bytes beyond what the process
// has now.
std::uint32_t enterSandbox(std::size_t memory);

// The processor time of the process.
std::chrono::seconds usedProcessorTime();

// Processor time after which the kernel kills the process, whatever it does about signals: one that
// a file has taken over would go on between requests, when no host waits.
inline constexpr std::chrono::seconds kLongestLife{90};

// Ends the process by SIGXCPU when it has used that much more processor time.
void limitProcessorTime(std::chrono::seconds time);

}  // namespace kolum::isolation

#endif
