// Running programs and waiting for them.
#ifndef KOLUM_BASE_CHILD_PROCESS_H
#define KOLUM_BASE_CHILD_PROCESS_H

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/descriptor.h"

namespace kolum {

// A running program, the leader of its own process group. Destruction kills the whole group.
class ChildProcess {
 public:
  enum class Output { kInherited, kCollected };

  // ARGUMENTS begin with the program's path. Empty if it cannot be started.
  static std::optional<ChildProcess> start(const std::vector<std::string>& arguments,
                                           Output output);
  // The same for a command line of the system's shell.
  static std::optional<ChildProcess> startShell(const std::string& line, Output output);

  ChildProcess(ChildProcess&& other) noexcept;
  ChildProcess& operator=(ChildProcess&&) = delete;
  ~ChildProcess();

  enum class Ending { kByItself, kTimeOver, kPrintedTooMuch };

  // Waits until the program has ended, no matter who else holds its output open. Kills it and all
  // processes of its group when the time is over or it has printed more than MAXOUTPUT bytes. A
  // program whose output is collected never leaves a process behind.
  Ending finish(std::chrono::milliseconds timeLimit, std::size_t maxOutput = std::size_t{16} << 20);

  // The wait status, after finish(); empty if the program was killed, or if another waiter took its
  // status.
  std::optional<int> status() const { return status_; }
  // What it has printed, if its output is collected.
  const std::string& output() const { return output_; }

 private:
  using Clock = std::chrono::steady_clock;

  ChildProcess(pid_t pid, Descriptor pipe);
  void waitForNews(Clock::time_point deadline) const;
  void readOutput(std::size_t maxOutput);
  bool hasEnded() const;
  void killGroup() const;
  void reap();

  pid_t pid_;
  Descriptor pipe_;     // the reading end, while it is open
  Descriptor process_;  // readable once the program has ended; not open on old kernels
  std::string output_;
  std::optional<int> status_;
};

// The status of a shell command as system() reports it, but -1 also if the time is over.
int runShell(const std::string& line, std::chrono::milliseconds timeLimit);

// Everything a shell command prints. Empty if it cannot be started; an empty text if it takes
// longer than the limit or prints more than 16 MiB.
std::optional<std::string> outputOfShell(const std::string& line,
                                         std::chrono::milliseconds timeLimit);

}  // namespace kolum

#endif
