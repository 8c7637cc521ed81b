#include "base/child_process.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>

#include "support/temp_dir.h"

namespace kolum {

namespace {

using namespace std::chrono_literals;
using test::contentOf;
using test::TempDir;

constexpr auto kLongEnough = 20s;

std::string output(const std::string& line, std::chrono::milliseconds limit = kLongEnough) {
  return outputOfShell(line, limit).value_or("not started");
}

std::chrono::steady_clock::duration timeOf(const std::function<void()>& work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  return std::chrono::steady_clock::now() - begin;
}

// Whether a process with the number in FILE still runs; a zombie does not.
bool runs(const std::string& file) {
  const pid_t pid = std::atoi(contentOf(file).c_str());
  EXPECT_GT(pid, 0);
  if (kill(pid, 0) != 0) return false;
  const std::string status = contentOf("/proc/" + std::to_string(pid) + "/stat");
  return status.find(") Z ") == std::string::npos && !status.empty();
}

TEST(ShellOutput, IsAllThatACommandPrints) {
  EXPECT_EQ(output("printf a; printf b >&2; printf c"), "ac");
  EXPECT_EQ(output("true"), "");
  EXPECT_EQ(output("exit 3"), "");
  EXPECT_EQ(output("seq 1 100000 | wc -l"), "100000\n");
  EXPECT_EQ(output("seq 1 100000").size(), 588895U);
}

TEST(ShellOutput, EndsWithItsTime) {
  for (const char* line : {"sleep 60", "kill -STOP $$", "while :; do printf x; sleep 0.05; done",
                           "trap '' TERM INT HUP; sleep 60; sleep 60"}) {
    SCOPED_TRACE(line);
    EXPECT_LT(timeOf([&] { EXPECT_EQ(output(line, 300ms), ""); }), 5s);
  }
}

TEST(ShellOutput, DoesNotWaitForOthersWhoHoldThePipe) {
  EXPECT_LT(timeOf([] { EXPECT_EQ(output("sleep 60 & printf done"), "done"); }), 5s);
}

TEST(ShellOutput, IsRefusedBeyondItsLimit) {
  EXPECT_LT(timeOf([] { EXPECT_EQ(output("yes"), ""); }), 15s);
}

TEST(ShellOutput, LeavesNoProcessBehind) {
  const TempDir folder;
  const std::string file = folder.path("pid");
  EXPECT_EQ(output("sleep 60 & echo $! >'" + file + "'; printf done"), "done");
  for (int i = 0; i < 100 && runs(file); ++i) usleep(20'000);
  EXPECT_FALSE(runs(file));
  EXPECT_EQ(output("sleep 60 & echo $! >'" + file + "'; sleep 60", 300ms), "");
  for (int i = 0; i < 100 && runs(file); ++i) usleep(20'000);
  EXPECT_FALSE(runs(file));
}

TEST(ShellOutput, ArrivesWhereTheHostIgnoresItsChildren) {
  const auto before = std::signal(SIGCHLD, SIG_IGN);
  EXPECT_EQ(output("printf a"), "a");
  std::signal(SIGCHLD, before);
}

TEST(RunShell, ReturnsTheWaitStatus) {
  EXPECT_EQ(runShell("true", kLongEnough), 0);
  EXPECT_EQ(WEXITSTATUS(runShell("exit 7", kLongEnough)), 7);
  EXPECT_EQ(WEXITSTATUS(runShell("/no/such/program 2>/dev/null", kLongEnough)), 127);
  EXPECT_EQ(WTERMSIG(runShell("kill -9 $$", kLongEnough)), SIGKILL);
  EXPECT_EQ(runShell("sleep 60", 200ms), -1);
}

// A file system in user space is served by a process that mount has started.
TEST(RunShell, LeavesAloneWhatACommandHasStarted) {
  const TempDir folder;
  const std::string file = folder.path("pid");
  EXPECT_EQ(runShell("sleep 60 & echo $! >'" + file + "'", kLongEnough), 0);
  EXPECT_TRUE(runs(file));
  kill(std::atoi(contentOf(file).c_str()), SIGKILL);
}

TEST(ChildProcess, NeedsNoShell) {
  auto child = ChildProcess::start({"/bin/echo", "$HOME;", "'"}, ChildProcess::Output::kCollected);
  ASSERT_TRUE(child.has_value());
  EXPECT_EQ(child->finish(kLongEnough), ChildProcess::Ending::kByItself);
  EXPECT_EQ(child->output(), "$HOME; '\n");
  EXPECT_EQ(child->status(), 0);
  EXPECT_FALSE(ChildProcess::start({"/no/such/program"}, ChildProcess::Output::kCollected));
}

TEST(ChildProcess, EndsWhenNobodyWantsItAnyMore) {
  const TempDir folder;
  const std::string file = folder.path("pid");
  {
    auto child = ChildProcess::startShell("echo $$ >'" + file + "'; sleep 60",
                                          ChildProcess::Output::kInherited);
    ASSERT_TRUE(child.has_value());
    for (int i = 0; i < 250 && contentOf(file).empty(); ++i) usleep(20'000);
    EXPECT_TRUE(runs(file));
  }
  EXPECT_FALSE(runs(file));
}

}  // namespace

}  // namespace kolum
