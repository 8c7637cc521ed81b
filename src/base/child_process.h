// Programs that are run and waited for.
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

// A running program, the first of a process group of its own. Destruction ends the whole group.
class ChildProcess {
 public:
  enum class Output { kInherited, kCollected };

  // ARGUMENTS begin with the program's path. Empty when it cannot be started.
  static std::optional<ChildProcess> start(const std::vector<std::string>& arguments,
                                           Output output);
  // The same with a line for the system's shell.
  static std::optional<ChildProcess> startShell(const std::string& line, Output output);

  ChildProcess(ChildProcess&& other) noexcept;
  ChildProcess& operator=(ChildProcess&&) = delete;
  ~ChildProcess();

  enum class Ending { kByItself, kTimeOver, kPrintedTooMuch };

  // Waits until the program has ended, whoever else holds its output. It is killed, with all
  // processes of its group, when the time is over or it has printed more than MAXOUTPUT bytes. A
  // program whose output is collected leaves no process behind in any case.
  Ending finish(std::chrono::milliseconds timeLimit, std::size_t maxOutput = std::size_t{16} << 20);

  // The wait status, behind finish(); empty when the program was killed, or when somebody else took
  // its status.
  std::optional<int> status() const { return status_; }
  // What it has printed, if that was to be collected.
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
  Descriptor pipe_;     // the reading end, as long as it is open
  Descriptor process_;  // readable when the program has ended; none with old kernels
  std::string output_;
  std::optional<int> status_;
};

// The status of a shell command as system() reports it, but -1 also when the time is over.
int runShell(const std::string& line, std::chrono::milliseconds timeLimit);

// All that a shell command prints. Empty when it cannot be started; an empty text when it takes
// longer than the limit, or prints more than 16 MiB: it may print without end.
std::optional<std::string> outputOfShell(const std::string& line,
                                         std::chrono::milliseconds timeLimit);

}  // namespace kolum

#endif
