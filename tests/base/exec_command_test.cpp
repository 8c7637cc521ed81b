#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kolum/thumbnail.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "support/child_process.h"
#include "support/descriptors.h"
#include "support/log_recorder.h"
#include "support/temp_dir.h"

namespace {

using kolum::test::contentOf;
using kolum::test::ExpectNoDescriptorLeak;
using kolum::test::LogMessage;
using kolum::test::LogRecorder;
using kolum::test::runInChild;
using kolum::test::TempDir;
using kolum::test::withinSeconds;
using testing::ElementsAre;

int shell(const std::string& script, int returnExitCode) {
  const char* argv[] = {"sh", "-c", script.c_str(), nullptr};
  return ExecCommand(argv, returnExitCode);
}

struct ResultCase {
  const char* script;
  int plain;
  int exitCode;
};

TEST(ExecCommand, ReturnsTheProgramsResult) {
  const ExpectNoDescriptorLeak noLeak;
  constexpr ResultCase kCases[] = {
      {"exit 0", 0, 0},     {"exit 1", 1, 1},     {"exit 3", 1, 3},
      {"exit 255", 1, 255}, {"kill -9 $$", 1, 1}, {"kill -15 $$", 1, 1},
  };
  for (const ResultCase& row : kCases) {
    SCOPED_TRACE(row.script);
    EXPECT_EQ(shell(row.script, 0), row.plain);
    EXPECT_EQ(shell(row.script, 1), row.exitCode);
    EXPECT_EQ(shell(row.script, -7), row.exitCode);
  }
}

// Hosts call tools that only some appliances have.
TEST(ExecCommand, SucceedsIfTheProgramCannotBeStarted) {
  const TempDir folder;
  const std::string noProgram = folder.write("text", "no program");
  for (const std::string& program : {folder.path("missing"), noProgram, folder.folder(),
                                     std::string("no-such-program-anywhere"), std::string()}) {
    SCOPED_TRACE(program);
    const char* argv[] = {program.c_str(), nullptr};
    EXPECT_EQ(ExecCommand(argv, 0), 0);
    EXPECT_EQ(ExecCommand(argv, 1), 0);
  }
}

TEST(ExecCommand, FailsWithoutAProgram) {
  const char* argv[] = {nullptr};
  EXPECT_EQ(ExecCommand(nullptr, 0), 1);
  EXPECT_EQ(ExecCommand(argv, 1), 1);
}

TEST(ExecCommand, PassesArgumentsUnchanged) {
  const TempDir folder;
  const std::string out = folder.path("out");
  const char* argv[] = {"sh",        "-c",       "printf '%s|' \"$@\" > \"$0\"",
                        out.c_str(), "it's",     "",
                        "$(x) \\\"", "\xFF\xFE", nullptr};
  EXPECT_EQ(ExecCommand(argv, 1), 0);
  EXPECT_EQ(contentOf(out), "it's||$(x) \\\"|\xFF\xFE|");
}

TEST(ExecCommand, SetsTheLibraryPathInTheChildOnly) {
  const TempDir folder;
  runInChild([&] {
    setenv("LD_LIBRARY_PATH", "/from/the/host", 1);
    const std::string out = folder.path("out");
    const std::string script = "printf '%s' \"$LD_LIBRARY_PATH\" > " + out;
    EXPECT_EQ(shell(script, 1), 0);
    EXPECT_EQ(contentOf(out), "/usr:/usr/lib");
    EXPECT_STREQ(getenv("LD_LIBRARY_PATH"), "/from/the/host");
  });
}

TEST(ExecCommand, TracesInBoldMagenta) {
  LogRecorder log;
  EXPECT_EQ(shell("exit 3", 0), 1);
  // The child's line is recorded in the child.
  EXPECT_THAT(log.texts(), ElementsAre("\n", " status = 768 \n"));
  for (const LogMessage& message : log.messages()) {
    EXPECT_EQ(message.level, 5);
    EXPECT_EQ(message.colour, "\033[1;35m");
    EXPECT_EQ(message.source, "kolum_util");
    EXPECT_EQ(message.function, "ExecCommand");
  }
}

TEST(ExecCommand, TracesTheRawStatusOfASignal) {
  LogRecorder log;
  EXPECT_EQ(shell("kill -9 $$", 1), 1);
  EXPECT_THAT(log.texts(), ElementsAre("\n", " status = 9 \n"));
}

TEST(ExecCommand, LeavesNoChildBehind) {
  EXPECT_EQ(shell("exit 3", 1), 3);
  EXPECT_EQ(shell("kill -9 $$", 1), 1);
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST(ExecCommand, WaitsThroughSignals) {
  runInChild([] {
    struct sigaction action {};
    action.sa_handler = [](int) {};  // without SA_RESTART
    ASSERT_EQ(sigaction(SIGALRM, &action, nullptr), 0);
    const itimerval often{{0, 20'000}, {0, 20'000}};
    ASSERT_EQ(setitimer(ITIMER_REAL, &often, nullptr), 0);
    EXPECT_EQ(shell("sleep 0.3; exit 3", 1), 3);
    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child was left behind";
  });
}

// The system then reaps the child itself, and its status is lost.
TEST(ExecCommand, ReturnsIfTheHostIgnoresItsChildren) {
  runInChild([] {
    std::signal(SIGCHLD, SIG_IGN);
    withinSeconds(20, [] { EXPECT_EQ(shell("exit 3", 1), 0); });
  });
}

TEST(ExecCommand, WaitsForItsOwnChildOnly) {
  runInChild([] {
    const pid_t other = fork();
    if (other == 0) _exit(7);
    EXPECT_EQ(shell("exit 3", 1), 3);
    int status = 0;
    EXPECT_EQ(waitpid(other, &status, 0), other);
    EXPECT_EQ(WEXITSTATUS(status), 7);
  });
}

// A process that can start no more children. The limit does not apply to root, so it becomes
// nobody.
TEST(ExecCommand, ReturnsAndReapsNoOtherChildIfForkFails) {
  const auto body = [] {
    const pid_t other = fork();
    if (other == 0) {
      pause();
      _exit(0);
    }
    constexpr uid_t kNobody = 65534;
    const bool isRoot = geteuid() == 0;
    if (isRoot) {
      ASSERT_EQ(setresuid(kNobody, kNobody, 0), 0);
    }
    const rlimit none{0, 0};
    ASSERT_EQ(setrlimit(RLIMIT_NPROC, &none), 0);
    LogRecorder log;
    EXPECT_EQ(shell("exit 3", 1), 0);
    EXPECT_THAT(log.texts(), ElementsAre("\n", " status = 0 \n"));
    if (isRoot) {
      EXPECT_EQ(setresuid(0, 0, 0), 0);
    }
    EXPECT_EQ(waitpid(other, nullptr, WNOHANG), 0) << "still running and not reaped";
    kill(other, SIGKILL);
    EXPECT_EQ(waitpid(other, nullptr, 0), other);
  };
  runInChild([&] { withinSeconds(20, body); });
}

TEST(ExecCommand, KeepsThreadsApart) {
  const ExpectNoDescriptorLeak noLeak;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 8; ++thread) {
    threads.emplace_back([thread] {
      const std::string script = "exit " + std::to_string(thread + 1);
      for (int round = 0; round < 20; ++round) EXPECT_EQ(shell(script, 1), thread + 1);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child was left behind";
}

}  // namespace
