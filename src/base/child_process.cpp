#include "base/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "base/spawn.h"

namespace kolum {

namespace {

constexpr std::chrono::milliseconds kLookAgain{20};  // if the kernel has no process descriptors

}  // namespace

std::optional<ChildProcess> ChildProcess::start(const std::vector<std::string>& arguments,
                                                Output output) {
  Descriptor readEnd;
  Descriptor writeEnd;
  if (output == Output::kCollected) {
    std::array<int, 2> ends = {-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
    readEnd.reset(ends[0]);
    writeEnd.reset(ends[1]);
    fcntl(readEnd.get(), F_SETFL, O_NONBLOCK);
  }
  SpawnActions actions;
  if (writeEnd.isOpen())
    posix_spawn_file_actions_adddup2(&actions.value, writeEnd.get(), STDOUT_FILENO);
  const pid_t pid = spawn(arguments, actions);
  if (pid < 0) return std::nullopt;
  return ChildProcess(pid, std::move(readEnd));
}

std::optional<ChildProcess> ChildProcess::startShell(const std::string& line, Output output) {
  return start({"/bin/sh", "-c", line}, output);
}

ChildProcess::ChildProcess(pid_t pid, Descriptor pipe)
    : pid_(pid),
      pipe_(std::move(pipe)),
      process_(static_cast<int>(syscall(SYS_pidfd_open, pid, 0))) {}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : pid_(std::exchange(other.pid_, -1)),
      pipe_(std::move(other.pipe_)),
      process_(std::move(other.process_)),
      output_(std::move(other.output_)),
      status_(other.status_) {}

ChildProcess::~ChildProcess() {
  if (pid_ < 0) return;
  killGroup();
  reap();
}

ChildProcess::Ending ChildProcess::finish(std::chrono::milliseconds timeLimit,
                                          std::size_t maxOutput) {
  const Clock::time_point deadline = Clock::now() + timeLimit;
  const bool isCollected = pipe_.isOpen();
  Ending ending = Ending::kByItself;
  for (;;) {
    // Checked before the output is read: once the program has ended, all its output is there.
    const bool ended = hasEnded();
    readOutput(maxOutput);
    if (output_.size() > maxOutput)
      ending = Ending::kPrintedTooMuch;
    else if (!ended && Clock::now() >= deadline)
      ending = Ending::kTimeOver;
    if (ended || ending != Ending::kByItself) break;
    waitForNews(deadline);
  }
  if (isCollected || ending != Ending::kByItself) killGroup();
  reap();
  if (ending != Ending::kByItself) status_.reset();
  return ending;
}

// Waits until there is output, the program has ended or the deadline has passed.
void ChildProcess::waitForNews(Clock::time_point deadline) const {
  auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
  if (!process_.isOpen()) left = std::min(left, kLookAgain);
  // poll() ignores negative descriptors.
  std::array<pollfd, 2> awaited = {{{pipe_.get(), POLLIN, 0}, {process_.get(), POLLIN, 0}}};
  poll(awaited.data(), awaited.size(), static_cast<int>(std::clamp<long>(left.count(), 0, 60'000)));
}

// Reads the available output, up to a little more than MAXOUTPUT bytes in all.
void ChildProcess::readOutput(std::size_t maxOutput) {
  std::array<char, 65536> piece;
  while (pipe_.isOpen() && output_.size() <= maxOutput) {
    const ssize_t count = read(pipe_.get(), piece.data(), piece.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EAGAIN) return;
    if (count > 0) {
      output_.append(piece.data(), static_cast<std::size_t>(count));
      continue;
    }
    // All writers have closed it; the program may still be running.
    pipe_.reset();
  }
}

// Does not reap the program, so that its pid is not reused.
bool ChildProcess::hasEnded() const {
  siginfo_t info = {};
  const int result = waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT);
  return result == 0 ? info.si_pid != 0 : errno == ECHILD;
}

void ChildProcess::killGroup() const {
  kill(-pid_, SIGKILL);
  // The child may not have created its group yet.
  kill(pid_, SIGKILL);
}

void ChildProcess::reap() {
  int status = 0;
  pid_t found = -1;
  do {
    found = waitpid(pid_, &status, 0);
  } while (found < 0 && errno == EINTR);
  if (found == pid_) status_ = status;
  pid_ = -1;
}

int runShell(const std::string& line, std::chrono::milliseconds timeLimit) {
  auto child = ChildProcess::startShell(line, ChildProcess::Output::kInherited);
  if (!child) return -1;
  child->finish(timeLimit);
  return child->status().value_or(-1);
}

std::optional<std::string> outputOfShell(const std::string& line,
                                         std::chrono::milliseconds timeLimit) {
  auto child = ChildProcess::startShell(line, ChildProcess::Output::kCollected);
  if (!child) return std::nullopt;
  return child->finish(timeLimit) == ChildProcess::Ending::kByItself ? child->output() : "";
}

}  // namespace kolum
