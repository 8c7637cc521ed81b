#include "support/child_process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <utility>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace kolum::test {

namespace {

struct Pipe {
  Pipe() {
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("pipe failed");
  }
  ~Pipe() {
    closeEnd(0);
    closeEnd(1);
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  void closeEnd(std::size_t end) {
    if (ends[end] >= 0) close(ends[end]);
    ends[end] = -1;
  }
  std::array<int, 2> ends = {-1, -1};
};

[[noreturn]] void execute(const std::vector<std::string>& arguments, const RunOptions& options,
                          Pipe& in, Pipe& out, Pipe& err) {
  dup2(in.ends[0], STDIN_FILENO);
  dup2(out.ends[1], STDOUT_FILENO);
  dup2(err.ends[1], STDERR_FILENO);
  for (const auto& [name, value] : options.environment) setenv(name.c_str(), value.c_str(), 1);
  if (!options.folder.empty() && chdir(options.folder.c_str()) != 0) _exit(126);
  std::vector<char*> argv;
  argv.reserve(arguments.size() + 1);
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  execvp(argv[0], argv.data());
  _exit(127);
}

// Moves what is ready between the pipes and the texts; false when both outputs have ended.
bool exchange(Pipe& in, std::string_view& input, Pipe& out, Pipe& err, RunResult& result,
              int milliseconds) {
  std::array<pollfd, 3> waits = {pollfd{in.ends[1], POLLOUT, 0}, pollfd{out.ends[0], POLLIN, 0},
                                 pollfd{err.ends[0], POLLIN, 0}};
  poll(waits.data(), waits.size(), milliseconds);
  if (waits[0].revents != 0) {
    const ssize_t sent = input.empty() ? -1 : write(in.ends[1], input.data(), input.size());
    if (sent > 0) input.remove_prefix(static_cast<std::size_t>(sent));
    if (sent <= 0 || input.empty()) in.closeEnd(1);
  }
  const auto take = [](pollfd& wait, Pipe& pipe, std::string& text) {
    if (wait.revents == 0) return;
    std::array<char, 65536> buffer = {};
    const ssize_t got = read(pipe.ends[0], buffer.data(), buffer.size());
    if (got > 0)
      text.append(buffer.data(), static_cast<std::size_t>(got));
    else
      pipe.closeEnd(0);
  };
  take(waits[1], out, result.out);
  take(waits[2], err, result.err);
  return out.ends[0] >= 0 || err.ends[0] >= 0;
}

int statusOf(int waitStatus) {
  return WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : -WTERMSIG(waitStatus);
}

int waitFor(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return statusOf(status);
}

}  // namespace

RunResult run(const std::vector<std::string>& arguments, const RunOptions& options) {
  using Clock = std::chrono::steady_clock;
  signal(SIGPIPE, SIG_IGN);
  Pipe in;
  Pipe out;
  Pipe err;
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("fork failed");
  if (child == 0) {
    signal(SIGPIPE, SIG_DFL);
    execute(arguments, options, in, out, err);
  }
  in.closeEnd(0);
  out.closeEnd(1);
  err.closeEnd(1);

  RunResult result;
  std::string_view input = options.input;
  if (input.empty()) in.closeEnd(1);
  const auto deadline = Clock::now() + options.timeout;
  while (exchange(in, input, out, err, result, 100)) {
    if (Clock::now() < deadline) continue;
    result.timedOut = true;
    kill(child, SIGKILL);
    break;
  }
  result.status = waitFor(child);
  return result;
}

std::string mustRun(const std::vector<std::string>& arguments, const RunOptions& options) {
  const RunResult result = run(arguments, options);
  if (result.status == 0) return result.out;
  std::string line;
  for (const std::string& argument : arguments) line += argument + " ";
  throw std::runtime_error(line + "ended with " + std::to_string(result.status) + ": " +
                           result.err + result.out);
}

std::vector<std::string> shellWords(const std::string& text) {
  std::vector<std::string> words;
  std::string word;
  bool inWord = false;
  char quote = '\0';
  for (const char c : text) {
    if (quote != '\0') {
      if (c == quote)
        quote = '\0';
      else
        word += c;
    } else if (c == '\'' || c == '"') {
      quote = c;
      inWord = true;
    } else if (c == ' ') {
      if (inWord) words.push_back(std::exchange(word, ""));
      inWord = false;
    } else {
      word += c;
      inWord = true;
    }
  }
  if (inWord) words.push_back(word);
  return words;
}

void runInChild(const std::function<void()>& body, const Environment& environment) {
  std::fflush(nullptr);
  const pid_t child = fork();
  ASSERT_GE(child, 0) << "fork failed";
  if (child == 0) {
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
    tzset();
    const bool failedBefore = ::testing::Test::HasFailure();
    try {
      body();
    } catch (const std::exception& error) {
      ADD_FAILURE() << "exception: " << error.what();
    }
    std::fflush(nullptr);
    _exit(!failedBefore && ::testing::Test::HasFailure() ? 1 : 0);
  }
  EXPECT_EQ(waitFor(child), 0) << "the child process failed or crashed, see above";
}

void withinSeconds(int seconds, const std::function<void()>& body) {
  std::mutex mutex;
  std::condition_variable changed;
  bool done = false;
  std::thread watchdog([&] {
    std::unique_lock lock(mutex);
    if (changed.wait_for(lock, std::chrono::seconds(seconds), [&] { return done; })) return;
    std::fprintf(stderr, "still not done after %d seconds\n", seconds);
    _exit(1);
  });
  body();
  {
    const std::lock_guard lock(mutex);
    done = true;
  }
  changed.notify_one();
  watchdog.join();
}

}  // namespace kolum::test
