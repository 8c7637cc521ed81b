#include "tool/scanned_folder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <thread>

#include "support/picture_builder.h"
#include "tool/kolum_run.h"

namespace fs = std::filesystem;

namespace kolum::test {

namespace {

using nlohmann::json;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

[[maybe_unused]] constexpr std::size_t kMostMemory = std::size_t{256} << 20;
// What is left of a scan that was killed, or of its workers, may take a moment to go.
constexpr auto kTimeToGo = 5s;
// A scan that is done ends, unless the kernel holds it.
constexpr auto kTimeToEnd = 3s;
constexpr auto kNap = 2ms;

int openedFor(const std::string& file) {
  return open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
}

[[noreturn]] void execute(const std::vector<std::string>& command, const Environment& environment,
                          const std::string& outputs) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  setpgid(0, 0);
  dup2(open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
  dup2(openedFor(outputs + ".out"), STDOUT_FILENO);
  dup2(openedFor(outputs + ".err"), STDERR_FILENO);
  for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
  std::vector<char*> argv;
  for (const std::string& word : command) argv.push_back(const_cast<char*>(word.c_str()));
  argv.push_back(nullptr);
  execvp(argv[0], argv.data());
  _exit(127);
}

std::size_t peakOf(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string word; status >> word;) {
    std::size_t kibibytes = 0;
    if (word == "VmHWM:" && status >> kibibytes) return kibibytes << 10;
  }
  return 0;
}

std::set<pid_t> children() {
  std::set<pid_t> found;
  for (const auto& thread : fs::directory_iterator("/proc/self/task")) {
    std::ifstream list(thread.path() / "children");
    for (pid_t child = 0; list >> child;) found.insert(child);
  }
  return found;
}

std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder))
    names.push_back(entry.path().filename());
  return names;
}

void reapWhatHasEnded() {
  while (waitpid(-1, nullptr, WNOHANG) > 0) continue;
}

}  // namespace

std::string goodPicture() {
  return png({.width = 40, .height = 30});
}

// ---- A scan

RunningScan::RunningScan(const std::vector<std::string>& command, const Environment& environment,
                         const std::string& outputs)
    : outputs_(outputs), process_(fork()) {
  if (process_ == 0) execute(command, environment, outputs);
}

RunningScan::~RunningScan() {
  if (hasEnded_) return;
  kill(process_, SIGKILL);
  for (const auto end = Clock::now() + kTimeToGo; Clock::now() < end && !hasEnded_;) {
    look();
    std::this_thread::sleep_for(kNap);
  }
}

void RunningScan::look() {
  peak_ = std::max(peak_, peakOf(process_));
  int status = 0;
  if (hasEnded_ || waitpid(process_, &status, WNOHANG) != process_) return;
  hasEnded_ = true;
  status_ = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

bool RunningScan::isDone() {
  look();
  return hasEnded_ || contentOf(outputs_ + ".out").find("\n  Library") != std::string::npos;
}

ScanResult RunningScan::finish(std::chrono::milliseconds limit) {
  std::optional<Clock::time_point> doneAt;
  while (true) {
    const auto now = Clock::now();
    if (isDone() && !doneAt) doneAt = now;
    if (hasEnded_ || now >= begin_ + limit || (doneAt && now >= *doneAt + kTimeToEnd)) break;
    std::this_thread::sleep_for(kNap);
  }
  ScanResult result;
  result.elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin_);
  EXPECT_TRUE(isDone()) << "longer than " << limit.count() << " ms";
  result.isHeld = !hasEnded_;
  result.status = status_;
  result.peak = peak_;
  result.out = contentOf(outputs_ + ".out");
  result.err = contentOf(outputs_ + ".err");
  return result;
}

// ---- Its folder

ScannedFolder::ScannedFolder() {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  for (const char* name : {"media", "data", "temporary", "outputs"})
    fs::create_directory(folder_.path(name));
  write("a.jpg", goodPicture());
  write("z.jpg", goodPicture());
}

ScannedFolder::~ScannedFolder() {
  expectNothingLeft();
}

std::string ScannedFolder::write(const std::string& name, const std::string& content) const {
  return folder_.write("media/" + name, content);
}

std::vector<std::string> ScannedFolder::command(const ScanSettings& settings) const {
  std::vector<std::string> command = settings.before;
  command.push_back(settings.program.empty() ? KOLUM_PROGRAM : settings.program);
  command.insert(command.end(), {"scan", "--library", library()});
  command.insert(command.end(), settings.arguments.begin(), settings.arguments.end());
  command.push_back(settings.root.empty() ? folder() : settings.root);
  return command;
}

RunningScan ScannedFolder::begin(const ScanSettings& settings) const {
  Environment environment = settings.environment;
  environment["TMPDIR"] = folder_.path("temporary");
  return {command(settings), environment, folder_.path("outputs/scan")};
}

ScanResult ScannedFolder::scan(const ScanSettings& settings) const {
  RunningScan running = begin(settings);
  ScanResult result = running.finish(settings.limit);
#ifndef KOLUM_SANITIZED
  EXPECT_LT(result.peak, kMostMemory);
#endif
  EXPECT_GE(result.status, 0) << result.err;
  EXPECT_THAT(namesIn(folder_.path("data")),
              testing::IsSubsetOf({"library.db", "library.db.lock"}));
  return result;
}

std::vector<json> ScannedFolder::rows() const {
  const Outcome outcome = kolum({"library", "export", "--json", "--library", library()});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  std::vector<json> rows = outcome.json();
  for (json& row : rows) {
    const std::string file = row["file"];
    row["name"] = file.substr(file.rfind('/') + 1);
  }
  return rows;
}

json ScannedFolder::row(const std::string& name) const {
  for (const json& row : rows())
    if (row["name"] == name) return row;
  return nullptr;
}

void ScannedFolder::expectGoodFiles() const {
  for (const char* name : {"a.jpg", "z.jpg"}) {
    const json found = row(name);
    ASSERT_TRUE(found.is_object()) << name;
    EXPECT_EQ(found.value("width", 0), 40) << found;
    EXPECT_FALSE(found.contains("error")) << found;
  }
}

void ScannedFolder::expectFailure(const std::string& name, const std::string& code,
                                  const std::string& reason) const {
  const json found = row(name);
  ASSERT_TRUE(found.is_object()) << name;
  ASSERT_TRUE(found.contains("error")) << found;
  EXPECT_EQ(found["error"]["code"], code) << found;
  EXPECT_THAT(found["error"]["reason"].get<std::string>(), testing::HasSubstr(reason));
}

// The descriptors and sockets of processes that are gone are gone as well. Mounts are compared
// after every test.
void ScannedFolder::expectNothingLeft() const {
  for (const auto end = Clock::now() + kTimeToGo; Clock::now() < end && !children().empty();) {
    reapWhatHasEnded();
    std::this_thread::sleep_for(kNap);
  }
  EXPECT_TRUE(children().empty());
  EXPECT_TRUE(fs::is_empty(folder_.path("temporary")));
}

}  // namespace kolum::test
