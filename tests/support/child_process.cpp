#include "support/child_process.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fcntl.h>
#include <array>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <filesystem>
#include <iterator>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

#include "support/leak_check.h"

// Null in programs without a leak checker.
extern "C" __attribute__((weak)) int __lsan_do_recoverable_leak_check();

#ifdef KOLUM_COVERAGE
extern "C" void __gcov_dump();
#endif

namespace kolum::test {

namespace {

using Clock = std::chrono::steady_clock;

class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() { reset(); }
  int get() const { return number_; }
  bool isOpen() const { return number_ >= 0; }
  void reset() {
    if (isOpen()) close(std::exchange(number_, -1));
  }

 private:
  int number_;
};

Descriptor opened(int number, const char* what) {
  if (number < 0) throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
  return Descriptor(number);
}

struct Pipe {
  Pipe() {
    std::array<int, 2> ends = {};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("pipe2 failed");
    reading = Descriptor(ends[0]);
    writing = Descriptor(ends[1]);
  }
  Descriptor reading;
  Descriptor writing;
};

// A file in memory, to be read from its beginning. Unlike a pipe it never fills up and never kills
// the writer with SIGPIPE.
Descriptor memoryFile(std::string_view content) {
  Descriptor file = opened(memfd_create("input", MFD_CLOEXEC), "memfd_create");
  while (!content.empty()) {
    const ssize_t written = write(file.get(), content.data(), content.size());
    if (written <= 0) throw std::runtime_error("cannot keep the input");
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  lseek(file.get(), 0, SEEK_SET);
  return file;
}

// A child must not outlive a test that CTest kills for taking too long.
void endWithParent(pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(1);
}

[[noreturn]] void execute(const std::vector<std::string>& arguments, const RunOptions& options,
                          int in, int out, int err) {
  setpgid(0, 0);
  signal(SIGPIPE, SIG_DFL);
  dup2(in, STDIN_FILENO);
  dup2(out, STDOUT_FILENO);
  dup2(err, STDERR_FILENO);
  for (const auto& [name, value] : options.environment) setenv(name.c_str(), value.c_str(), 1);
  if (!options.folder.empty() && chdir(options.folder.c_str()) != 0) _exit(126);
  std::vector<char*> argv;
  argv.reserve(arguments.size() + 1);
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  execvp(argv[0], argv.data());
  _exit(127);
}

// Reads what a pipe holds; closes it at its end.
void drain(Descriptor& from, std::string& text) {
  std::array<char, 65536> buffer = {};
  const ssize_t got = read(from.get(), buffer.data(), buffer.size());
  if (got > 0)
    text.append(buffer.data(), static_cast<std::size_t>(got));
  else if (got == 0 || errno != EINTR)
    from.reset();
}

// Collects the outputs until they and the process have ended; false on time-out.
bool collect(Descriptor process, Descriptor& out, Descriptor& err, RunResult& result,
             Clock::time_point deadline) {
  while (process.isOpen() || out.isOpen() || err.isOpen()) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    if (left.count() <= 0) return false;
    // Closed descriptors are negative, and poll() ignores those.
    std::array<pollfd, 3> waits = {pollfd{process.get(), POLLIN, 0}, pollfd{out.get(), POLLIN, 0},
                                   pollfd{err.get(), POLLIN, 0}};
    if (poll(waits.data(), waits.size(), static_cast<int>(left.count())) <= 0) continue;
    if (waits[0].revents != 0) process.reset();
    if (waits[1].revents != 0) drain(out, result.out);
    if (waits[2].revents != 0) drain(err, result.err);
  }
  return true;
}

int waitFor(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

// A child's exit status. The numbers are unusual so that an exit() within the body is not mistaken
// for the body's end.
constexpr int kBodyPassed = 101;
constexpr int kBodyFailed = 102;
constexpr int kBodySkipped = 103;

void callBody(const std::function<void()>& body) {
  try {
    const LeakCheck check(LeakCheck::Scope::kProcess);
    body();
    check.expectNothingNew();
  } catch (const std::exception& error) {
    ADD_FAILURE() << "exception: " << error.what();
  } catch (...) {
    ADD_FAILURE() << "exception of an unknown type";
  }
}

bool isSingleThreaded() {
  const std::filesystem::directory_iterator threads("/proc/self/task");
  return std::distance(begin(threads), end(threads)) == 1;
}

// The leak checker runs when a program exits normally, which a child never does.
void checkForLeaks() {
  if (__lsan_do_recoverable_leak_check != nullptr && __lsan_do_recoverable_leak_check() != 0)
    ADD_FAILURE() << "memory leaked";
}

// Coverage is written when a program exits normally, which a child never does.
void keepCoverage() {
#ifdef KOLUM_COVERAGE
  __gcov_dump();
#endif
}

[[noreturn]] void runBodyAndEnd(const std::function<void()>& body, bool checksLeaks) {
  // A test that failed before the fork fails anyway.
  const bool hadFailed = ::testing::Test::HasFailure();
  callBody(body);
  if (checksLeaks) checkForLeaks();
  std::fflush(nullptr);
  keepCoverage();
  if (::testing::Test::HasFailure() && !hadFailed) _exit(kBodyFailed);
  _exit(::testing::Test::IsSkipped() ? kBodySkipped : kBodyPassed);
}

// A child that runs BODY and ends; negative if there is none.
pid_t startChild(const std::function<void()>& body, const Environment& environment,
                 bool checksLeaks) {
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child != 0) return child;
  endWithParent(parent);
  for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
  tzset();
  runBodyAndEnd(body, checksLeaks);
}

void report(int status) {
  if (status == kBodyPassed) return;
  if (status == kBodySkipped) GTEST_SKIP() << "skipped in the child process, see above";
  if (status == kBodyFailed) FAIL() << "failed in the child process, see above";
  if (status < 0) {
    FAIL() << "the child process was killed by signal " << -status << " (" << strsignal(-status)
           << ")";
  }
  FAIL() << "the child process exited with status " << status
         << " before the end of its body: a sanitizer report, see above, or a call of exit()";
}

}  // namespace

RunResult run(const std::vector<std::string>& arguments, const RunOptions& options) {
  const Descriptor in = memoryFile(options.input);
  Pipe out;
  Pipe err;
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("fork failed");
  if (child == 0) {
    endWithParent(parent);
    execute(arguments, options, in.get(), out.writing.get(), err.writing.get());
  }
  out.writing.reset();
  err.writing.reset();

  RunResult result;
  // By number: in Debian 12 there is no wrapper that C++ programs can link with.
  Descriptor process(static_cast<int>(syscall(SYS_pidfd_open, child, 0)));
  result.timedOut = !collect(std::move(process), out.reading, err.reading, result,
                             Clock::now() + options.timeout);
  if (result.timedOut) {
    kill(-child, SIGKILL);
    kill(child, SIGKILL);
  }
  result.status = waitFor(child);
  return result;
}

std::string mustRun(const std::vector<std::string>& arguments, const RunOptions& options) {
  const RunResult result = run(arguments, options);
  if (result.status == 0 && !result.timedOut) return result.out;
  std::string line;
  for (const std::string& argument : arguments) line += argument + " ";
  throw std::runtime_error(line + (result.timedOut ? "took too long, " : "") + "ended with " +
                           std::to_string(result.status) + ": " + result.err + result.out);
}

std::vector<std::string> shellWords(std::string_view text) {
  std::vector<std::string> words;
  std::string word;
  bool inWord = false;
  char quote = '\0';
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const bool opensQuote = quote == '\0' && (c == '\'' || c == '"');
    const bool endsWord = quote == '\0' && (c == ' ' || c == '\t' || c == '\n');
    const bool escapes = c == '\\' && quote != '\'' && i + 1 < text.size() &&
                         (quote == '\0' || text[i + 1] == '"' || text[i + 1] == '\\');
    if (endsWord) {
      if (inWord) words.push_back(std::exchange(word, ""));
      inWord = false;
      continue;
    }
    inWord = true;
    if (opensQuote)
      quote = c;
    else if (c == quote)
      quote = '\0';
    else
      word += escapes ? text[++i] : c;
  }
  if (quote != '\0') throw std::invalid_argument("open quote in: " + std::string(text));
  if (inWord) words.push_back(word);
  return words;
}

void runInChild(const std::function<void()>& body, const Environment& environment) {
  std::fflush(nullptr);
  // The child lacks the stacks of other threads, so memory that only they refer to would count as
  // leaked.
  const pid_t child = startChild(body, environment, isSingleThreaded());
  ASSERT_GE(child, 0) << "fork failed";
  report(waitFor(child));
}

void runInChildren(int count, const std::function<void(int)>& body) {
  std::fflush(nullptr);
  std::vector<pid_t> children;
  for (int i = 0; i < count; ++i)
    children.push_back(startChild([&] { body(i); }, {}, isSingleThreaded()));
  for (const pid_t child : children) {
    SCOPED_TRACE(child);
    if (child < 0)
      ADD_FAILURE() << "fork failed";
    else
      report(waitFor(child));
  }
}

void withinSeconds(int seconds, const std::function<void()>& body) {
  std::mutex mutex;
  std::condition_variable_any changed;
  // Stopped and joined however the body ends.
  const std::jthread watchdog([&](const std::stop_token& bodyDone) {
    std::unique_lock lock(mutex);
    changed.wait_for(lock, bodyDone, std::chrono::seconds(seconds), [] { return false; });
    if (bodyDone.stop_requested()) return;
    std::fprintf(stderr, "still not done after %d seconds\n", seconds);
    _exit(1);
  });
  body();
}

}  // namespace kolum::test
