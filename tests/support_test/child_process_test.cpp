#include "support/child_process.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <stdexcept>

#include "support/descriptors.h"
#include "support/temp_dir.h"
#include "support_test/failing_body_run.h"

namespace kolum::test {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Clock = std::chrono::steady_clock;

TEST(Run, ReturnsStatusAndBothOutputs) {
  const RunResult result = run({"sh", "-c", "echo out; echo err >&2; exit 3"});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.out, "out\n");
  EXPECT_EQ(result.err, "err\n");
  EXPECT_FALSE(result.timedOut);
}

TEST(Run, ReportsSignalAsNegativeStatus) {
  EXPECT_EQ(run({"sh", "-c", "kill -TERM $$"}).status, -SIGTERM);
}

TEST(Run, ReportsProgramThatCannotRun) {
  EXPECT_EQ(run({"/no/such/program"}).status, 127);
  EXPECT_EQ(run({"true"}, {.folder = "/no/such/folder"}).status, 126);
}

TEST(Run, PassesArgumentsUnchanged) {
  EXPECT_EQ(run({"printf", "[%s]", "a b", "", "$HOME", "'", "*"}).out, "[a b][][$HOME]['][*]");
}

TEST(Run, PassesInputFolderAndEnvironment) {
  const TempDir folder;
  EXPECT_EQ(run({"cat"}).out, "");
  EXPECT_EQ(run({"cat"}, {.input = "some\ninput"}).out, "some\ninput");
  EXPECT_EQ(run({"pwd"}, {.folder = folder.folder()}).out + "/",
            std::filesystem::canonical(folder.folder()).string() + "\n/");
  EXPECT_EQ(run({"sh", "-c", "echo $KOLUM_TEST"}, {.environment = {{"KOLUM_TEST", "x y"}}}).out,
            "x y\n");
}

TEST(Run, TransfersMoreThanAPipeHolds) {
  const std::string large(3'000'000, 'x');
  EXPECT_EQ(run({"cat"}, {.input = large}).out, large);
  EXPECT_EQ(run({"sh", "-c", "cat >&2"}, {.input = large}).err, large);
  EXPECT_EQ(run({"true"}, {.input = large}).status, 0) << "unread input";
}

TEST(Run, KillsProgramThatTakesTooLong) {
  for (const char* command : {
           "echo before; sleep 100",
           "echo before; sleep 100 & wait",         // in another process
           "echo before; exec >&- 2>&-; sleep 100"  // with its outputs closed
       }) {
    SCOPED_TRACE(command);
    const auto start = Clock::now();
    const RunResult result = run({"sh", "-c", command}, {.timeout = std::chrono::seconds(1)});
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(30));
    EXPECT_TRUE(result.timedOut);
    EXPECT_EQ(result.status, -SIGKILL);
    EXPECT_EQ(result.out, "before\n");
  }
}

TEST(Run, LeavesNothingBehind) {
  const ExpectNoDescriptorLeak leak;
  struct sigaction before = {};
  struct sigaction after = {};
  sigaction(SIGPIPE, nullptr, &before);
  run({"true"}, {.input = std::string(1'000'000, 'x')});
  sigaction(SIGPIPE, nullptr, &after);
  EXPECT_EQ(before.sa_handler, after.sa_handler) << "the caller's handler";
}

TEST(MustRun, ReturnsOutputOrThrowsTheToolsMessages) {
  EXPECT_EQ(mustRun({"echo", "fine"}), "fine\n");
  try {
    mustRun({"sh", "-c", "echo said; echo warned >&2; exit 4"});
    FAIL() << "nothing thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_THAT(error.what(), HasSubstr("said"));
    EXPECT_THAT(error.what(), HasSubstr("warned"));
    EXPECT_THAT(error.what(), HasSubstr("ended with 4"));
  }
}

TEST(ShellWords, SplitsLikeAShell) {
  EXPECT_THAT(shellWords(""), IsEmpty());
  EXPECT_THAT(shellWords(" \t\n "), IsEmpty());
  for (const char* text : {"a b  c", "\ta\tb ", "'a b' c", "\"a b\" c", "a' 'b\" \"c", "'' a \"\"",
                           "'\"' \"'\"", "a\\ b", "\\'", "\"a\\\"b\\\\c\\d\"", "'a\\b'",
                           "-vf \"drawtext=text='x y':x=1\"", "-metadata title='\xC3\xA9 \xFF'"}) {
    // printf ends each word with a byte that none of them has.
    const std::string shell = run({"sh", "-c", "printf '%s\\001' " + std::string(text)}).out;
    std::string ours;
    for (const std::string& word : shellWords(text)) ours += word + '\1';
    EXPECT_EQ(ours, shell) << text;
  }
}

TEST(ShellWords, RejectsOpenQuote) {
  for (const char* text : {"'a", "a\"b", "'a\\'b'", "\"a\\\""})
    EXPECT_THROW(shellWords(text), std::invalid_argument) << text;
}

TEST(RunInChild, SetsEnvironmentOfTheChildOnly) {
  const char* const zone = std::getenv("TZ");
  const std::string before = zone == nullptr ? "none" : zone;
  const std::time_t noon = 43'200;
  const auto hourOf = [&] {
    std::tm local = {};
    return localtime_r(&noon, &local)->tm_hour;
  };
  const int hour = hourOf();
  runInChild([&] { EXPECT_EQ(hourOf(), 17); }, {{"TZ", "FIVE-5"}});
  runInChild([&] { EXPECT_EQ(hourOf(), 9); }, {{"TZ", "THREE3"}});
  EXPECT_EQ(hourOf(), hour);
  const char* const zoneAfter = std::getenv("TZ");
  EXPECT_EQ(zoneAfter == nullptr ? "none" : std::string(zoneAfter), before);
}

TEST(RunInChild, KeepsChangesInTheChild) {
  int value = 1;
  runInChild([&] { value = 2; });
  EXPECT_EQ(value, 1);
}

TEST(RunInChild, ReportsEveryWayToFail) {
  expectFailure("Child.FailedExpectation", "the body's message");
  expectFailure("Child.FailedAssertion", "the body's message");
  expectFailure("Child.Exception", "the body's message");
  expectFailure("Child.ExceptionOfAnotherType", "unknown type");
  expectFailure("Child.Kill", "killed by signal 9");
  expectFailure("Child.Exit", "exited with status 0 before the end");
}

TEST(RunInChild, SkipsTheTestWhenTheBodySkips) {
  expectSkipped("Child.Skip");
}

TEST(RunInChild, ReportsSanitizerFindings) {
  if (!kHasAddressSanitizer) GTEST_SKIP() << "built without the address sanitizer";
  expectSanitizerReport("Child.Overflow");
  expectSanitizerReport("Child.Leak");
}

TEST(RunInChild, EndsTheChildWhenItsTestDies) {
  const TempDir folder;
  ASSERT_EQ(mkfifo(folder.path("alive").c_str(), 0600), 0);
  runInChild([&] {
    if (const pid_t middle = fork(); middle != 0) {
      waitpid(middle, nullptr, 0);
      return;
    }
    // Orphaned, because this body must not leave a child.
    if (fork() != 0) _exit(0);
    // A test whose child kills it.
    runInChild([&] {
      alarm(60);  // in case it is not killed
      EXPECT_GE(open(folder.path("alive").c_str(), O_WRONLY), 0);
      kill(getppid(), SIGKILL);
      while (true) pause();
    });
    _exit(1);
  });
  // Reading ends when the last process that could write is gone.
  EXPECT_FALSE(run({"cat", folder.path("alive")}, {.timeout = std::chrono::seconds(20)}).timedOut);
}

TEST(WithinSeconds, PassesQuickBody) {
  bool ran = false;
  withinSeconds(60, [&] { ran = true; });
  EXPECT_TRUE(ran);
}

TEST(WithinSeconds, FailsHangingOrThrowingBody) {
  const RunResult hung = runFailingBody("Within.Hang");
  EXPECT_EQ(hung.status, 1);
  EXPECT_THAT(hung.err, HasSubstr("still not done after 1 seconds"));
  const RunResult thrown = runFailingBody("Within.Exception");
  EXPECT_EQ(thrown.status, 1);
  EXPECT_THAT(thrown.out, HasSubstr("[  FAILED  ] Within.Exception"));
}

TEST(OpenDescriptorCount, CountsOpenDescriptors) {
  const int before = openDescriptorCount();
  const int added = dup(0);
  ASSERT_GE(added, 0);
  EXPECT_EQ(openDescriptorCount(), before + 1);
  close(added);
  EXPECT_EQ(openDescriptorCount(), before);
}

TEST(ExpectNoDescriptorLeak, FailsLeakingTest) {
  const RunResult result = runFailingBody("Descriptors.Leak");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, HasSubstr("[  FAILED  ] Descriptors.Leak"));
}

}  // namespace

}  // namespace kolum::test
