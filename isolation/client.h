// The host's side: starts the nursery and workers, asks them, and ends them.
#ifndef KOLUM_ISOLATION_CLIENT_H
#define KOLUM_ISOLATION_CLIENT_H

#include <sys/types.h>

#include <csignal>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/descriptor.h"
#include "isolation/isolation.h"
#include "isolation/message.h"
#include "isolation/processors.h"
#include "isolation/wire.h"

namespace kolum::isolation {

// A child process, which another part of the host may reap.
class Process {
 public:
  explicit Process(pid_t id);
  Process(Process&&) noexcept = default;
  Process& operator=(Process&&) noexcept = default;

  void kill() const;
  // Waits for the end, and reaps. False if it has not ended by then.
  bool waitUntil(std::chrono::steady_clock::time_point deadline);
  // How it ended; empty before, and if another part of the host took the status.
  const std::optional<siginfo_t>& end() const { return end_; }

 private:
  bool reap();

  pid_t id_;
  Descriptor handle_;  // a pidfd
  std::optional<siginfo_t> end_;
};

// A worker that waits for requests.
struct Worker {
  Process process;
  Descriptor socket;
  std::uint32_t layers = 0;
  std::uint64_t requests = 0;
  std::uint32_t processor = UINT32_MAX;  // where the last one was served
};

// The process that makes workers by forking itself: it has loaded all libraries, and reads nothing.
class Nursery {
 public:
  // Empty with the reason in WHY if it cannot be started.
  static std::unique_ptr<Nursery> start(const Settings& settings, std::string& why);
  ~Nursery();
  Nursery(const Nursery&) = delete;
  Nursery& operator=(const Nursery&) = delete;

  std::unique_ptr<Worker> newWorker(std::string& why);

 private:
  Nursery(Process process, Descriptor socket);

  Process process_;
  Descriptor socket_;
};

class Client {
 public:
  explicit Client(const Settings& settings);
  ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  read::Findings look(const media::Source& source, const read::Query& query);
  std::optional<std::uint32_t> activeLayers(std::string& why);
  // Ends all workers.
  void stop();

 private:
  std::unique_ptr<Worker> take(std::string& why);
  std::unique_ptr<Worker> newWorker(std::string& why);
  bool mayStart(std::string& why);
  read::Findings answerOf(std::unique_ptr<Worker> worker, Deadline deadline);
  void putBack(std::unique_ptr<Worker> worker);
  void abandon(std::unique_ptr<Worker> worker);
  void forget(const Worker* worker);
  read::Failure failureOf(Worker& worker, Transfer transfer) const;

  const Settings settings_;
  Processors processors_;
  std::mutex startMutex_;  // of the nursery; held while it starts
  std::unique_ptr<Nursery> nursery_;
  std::mutex mutex_;
  bool isStopped_ = false;
  std::vector<std::unique_ptr<Worker>> idle_;
  std::vector<const Worker*> busy_;
  // Killed, but not gone: the kernel waits for a device that does not answer.
  std::vector<std::unique_ptr<Worker>> stuck_;
};

}  // namespace kolum::isolation

#endif
