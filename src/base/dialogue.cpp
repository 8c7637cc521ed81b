#include "base/dialogue.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
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

constexpr const char* kHasEnded = "it has ended";
constexpr const char* kTimeOver = "it does not answer in time";
constexpr const char* kTooLong = "its answer is too long";
constexpr const char* kNotAsked = "it says more than it was asked for";

// A killed process is gone in microseconds, unless a device holds it; that one is left behind.
constexpr std::chrono::milliseconds kDeathTime{5000};

pid_t startWith(const std::vector<std::string>& arguments, int socket) {
  SpawnActions actions;
  posix_spawn_file_actions_adddup2(&actions.value, socket, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions.value, socket, STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&actions.value, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addclosefrom_np(&actions.value, STDERR_FILENO + 1);
  return spawn(arguments, actions, {.hasDefaultSignals = true});
}

// False if the time is over first.
bool waitFor(int descriptor, short events, std::chrono::steady_clock::time_point deadline) {
  using std::chrono::milliseconds;
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) return false;
    pollfd awaited = {descriptor, events, 0};
    if (poll(&awaited, 1, static_cast<int>(std::min(left, milliseconds(60'000)).count())) > 0)
      return true;
  }
}

bool mustWait() {
  return errno == EAGAIN || errno == EINTR;
}

// Also false if the program has ended.
bool hasUnreadBytes(int socket) {
  char byte = 0;
  return recv(socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT) > 0;
}

}  // namespace

std::optional<Dialogue> Dialogue::start(const std::vector<std::string>& arguments,
                                        const Limits& limits) {
  std::array<int, 2> ends = {-1, -1};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) return std::nullopt;
  Descriptor ours(ends[0]);
  const Descriptor theirs(ends[1]);
  const pid_t pid = startWith(arguments, theirs.get());
  if (pid < 0) return std::nullopt;
  return Dialogue(pid, std::move(ours), limits);
}

Dialogue::Dialogue(pid_t pid, Descriptor socket, const Limits& limits)
    : pid_(pid),
      owner_(getpid()),
      socket_(std::move(socket)),
      process_(static_cast<int>(syscall(SYS_pidfd_open, pid, 0))),
      limits_(limits) {}

Dialogue::Dialogue(Dialogue&& other) noexcept
    : pid_(std::exchange(other.pid_, -1)),
      owner_(other.owner_),
      socket_(std::move(other.socket_)),
      process_(std::move(other.process_)),
      limits_(other.limits_) {}

Dialogue::~Dialogue() {
  end();
}

bool Dialogue::isOwn() const {
  return owner_ == getpid();
}

std::optional<std::string> Dialogue::ask(std::string_view question, std::string& why) {
  std::optional<std::string> answer;
  if (!socket_.isOpen() || !isOwn()) {
    why = kHasEnded;
  } else if (hasUnreadBytes(socket_.get())) {
    why = kNotAsked;
  } else {
    const auto deadline = Clock::now() + limits_.answerTime;
    if (send(std::string(question) + "\n", deadline, why)) answer = receive(deadline, why);
  }
  if (!answer) end();
  return answer;
}

bool Dialogue::send(std::string_view line, Clock::time_point deadline, std::string& why) const {
  while (!line.empty()) {
    const ssize_t count =
        ::send(socket_.get(), line.data(), line.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count >= 0) {
      line.remove_prefix(static_cast<std::size_t>(count));
    } else if (!mustWait()) {
      why = kHasEnded;
      return false;
    } else if (!waitFor(socket_.get(), POLLOUT, deadline)) {
      why = kTimeOver;
      return false;
    }
  }
  return true;
}

std::optional<std::string> Dialogue::receive(Clock::time_point deadline, std::string& why) const {
  std::string answer;
  std::array<char, 4096> piece;
  for (;;) {
    // Also for a program that sends byte by byte without end.
    if (!waitFor(socket_.get(), POLLIN, deadline)) {
      why = kTimeOver;
      return std::nullopt;
    }
    const ssize_t count = recv(socket_.get(), piece.data(), piece.size(), MSG_DONTWAIT);
    if (count < 0 && mustWait()) continue;
    if (count <= 0) {
      why = kHasEnded;
      return std::nullopt;
    }
    answer.append(piece.data(), static_cast<std::size_t>(count));
    const std::size_t end = answer.find('\n');
    if (std::min(end, answer.size()) > limits_.longestAnswer) {
      why = kTooLong;
      return std::nullopt;
    }
    if (end == std::string::npos) continue;
    if (end + 1 != answer.size()) {
      why = kNotAsked;
      return std::nullopt;
    }
    answer.pop_back();
    return answer;
  }
}

void Dialogue::end() {
  socket_.reset();
  const pid_t pid = std::exchange(pid_, -1);
  if (pid < 0 || !isOwn()) return;
  // As long as nobody has reaped it, its number, which is also the group's, is not reused.
  siginfo_t info = {};
  const auto id = static_cast<id_t>(pid);
  if (waitid(P_PID, id, &info, WEXITED | WNOHANG | WNOWAIT) != 0) return;
  kill(-pid, SIGKILL);
  kill(pid, SIGKILL);  // it may not have made its group yet
  if (process_.isOpen() && !waitFor(process_.get(), POLLIN, Clock::now() + kDeathTime)) return;
  while (waitid(P_PID, id, &info, WEXITED) != 0 && errno == EINTR) {
  }
  process_.reset();
}

}  // namespace kolum
