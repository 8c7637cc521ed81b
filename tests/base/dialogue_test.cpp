#include "base/dialogue.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "support/child_process.h"
#include "support/temp_dir.h"

namespace kolum {

namespace {

using namespace std::chrono_literals;
using test::contentOf;
using test::TempDir;

constexpr auto kLongEnough = 20s;

std::optional<Dialogue> shell(const std::string& line,
                              std::chrono::milliseconds answerTime = kLongEnough) {
  return Dialogue::start({"/bin/sh", "-c", line}, {.answerTime = answerTime, .longestAnswer = 100});
}

// What it answers, or why it does not.
std::string said(Dialogue& dialogue, const std::string& question) {
  std::string why;
  const auto answer = dialogue.ask(question, why);
  EXPECT_EQ(answer.has_value(), why.empty());
  return answer ? "answer: " + *answer : why;
}

constexpr char kEcho[] = "while read -r line; do echo \"<$line>\"; done";

TEST(Dialogue, AnswersEachLineWithALine) {
  auto dialogue = shell(kEcho);
  ASSERT_TRUE(dialogue);
  for (int i = 0; i < 50; ++i) {
    const std::string question = std::to_string(i) + " of 50";
    EXPECT_EQ(said(*dialogue, question), "answer: <" + question + ">");
  }
  EXPECT_EQ(said(*dialogue, ""), "answer: <>");
}

TEST(Dialogue, TakesAnswersThatComeInPieces) {
  auto dialogue = shell("while read -r line; do printf a; printf b; echo; done");
  ASSERT_TRUE(dialogue);
  EXPECT_EQ(said(*dialogue, "x"), "answer: ab");
  EXPECT_EQ(said(*dialogue, "y"), "answer: ab");
}

TEST(Dialogue, NeedsAProgram) {
  EXPECT_FALSE(Dialogue::start({"/nowhere/program"}, {}));
}

struct BadProgram {
  const char* what;
  const char* script;
  const char* reason;
};

constexpr BadProgram kBadPrograms[] = {
    {"ends at once", "exit 0", "it has ended"},
    {"ends when it is asked", "read -r line", "it has ended"},
    {"ends in the middle of a line", "read -r line; printf abc", "it has ended"},
    {"is killed", "read -r line; kill -KILL $$", "it has ended"},
    {"hangs", "sleep 60", "it does not answer in time"},
    {"stops", "kill -STOP $$", "it does not answer in time"},
    {"ignores signals", "trap '' TERM INT HUP; sleep 60; sleep 60", "it does not answer in time"},
    {"drips", "while :; do printf x; sleep 0.1; done", "it does not answer in time"},
    {"is verbose", "read -r line; seq 1 100 | tr -d '\\n'; sleep 60", "its answer is too long"},
    {"floods", "yes yes yes yes yes | tr -d '\\n'", "its answer is too long"},
    {"says two lines", "read -r line; printf 'a\\nb\\n'; sleep 60",
     "it says more than it was asked for"},
};

TEST(Dialogue, EndsWithAProgramThatDoesAnythingElse) {
  for (const BadProgram& row : kBadPrograms) {
    SCOPED_TRACE(row.what);
    const auto begin = std::chrono::steady_clock::now();
    {
      auto dialogue = shell(row.script, 1s);
      ASSERT_TRUE(dialogue);
      // A flood may be there before the question.
      const std::string reason = said(*dialogue, "x");
      if (reason != "it says more than it was asked for") {
        EXPECT_EQ(reason, row.reason);
      }
      EXPECT_EQ(said(*dialogue, "x"), "it has ended");
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 10s);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
  }
}

// Waits until a file has a line, which a program writes.
std::string lineOf(const std::string& file) {
  for (int i = 0; i < 20'000 && !contentOf(file).ends_with("\n"); ++i) usleep(1000);
  return contentOf(file);
}

TEST(Dialogue, RefusesAnswersToNoQuestion) {
  const TempDir folder;
  const std::string mark = folder.path("mark");
  auto dialogue =
      shell("read -r line; echo first; echo second; echo done >'" + mark + "'; read -r line");
  ASSERT_TRUE(dialogue);
  const std::string first = said(*dialogue, "x");
  lineOf(mark);
  // The second line came with the first one or after it.
  if (first == "answer: first") {
    EXPECT_EQ(said(*dialogue, "y"), "it says more than it was asked for");
  } else {
    EXPECT_EQ(first, "it says more than it was asked for");
  }
}

TEST(Dialogue, RefusesAnswersThatComeEarly) {
  const TempDir folder;
  const std::string mark = folder.path("mark");
  auto dialogue = shell("echo early; echo done >'" + mark + "'; read -r line; echo late");
  ASSERT_TRUE(dialogue);
  lineOf(mark);
  EXPECT_EQ(said(*dialogue, "x"), "it says more than it was asked for");
}

// Whether a process with the number in FILE still runs; a zombie does not.
bool runs(const std::string& file) {
  const auto pid = static_cast<pid_t>(std::strtol(lineOf(file).c_str(), nullptr, 10));
  EXPECT_GT(pid, 0);
  const std::string status = contentOf("/proc/" + std::to_string(pid) + "/stat");
  return status.find(") Z ") == std::string::npos && !status.empty();
}

TEST(Dialogue, TakesTheProgramsOwnChildrenWithIt) {
  const TempDir folder;
  const std::string file = folder.path("pid");
  {
    auto dialogue = shell("sleep 60 & echo $! >'" + file + "'; " + kEcho);
    ASSERT_TRUE(dialogue);
    EXPECT_EQ(said(*dialogue, "x"), "answer: <x>");
    EXPECT_TRUE(runs(file));
  }
  for (int i = 0; i < 20'000 && runs(file); ++i) usleep(1000);
  EXPECT_FALSE(runs(file));
}

TEST(Dialogue, GivesTheProgramNoOtherDescriptors) {
  const int leaking = open("/dev/null", O_RDONLY);  // NOLINT: inherited on purpose
  auto dialogue = shell("read -r line; set -- /proc/self/fd/*; echo $#; read -r line");
  ASSERT_TRUE(dialogue);
  // The three standard ones, and that of the folder itself.
  EXPECT_EQ(said(*dialogue, "x"), "answer: 4");
  close(leaking);
}

TEST(Dialogue, SurvivesAHostThatReapsAllChildren) {
  auto dialogue = shell("read -r line");
  ASSERT_TRUE(dialogue);
  EXPECT_EQ(said(*dialogue, "x"), "it has ended");
  auto other = shell("exit 0");
  ASSERT_TRUE(other);
  while (waitpid(-1, nullptr, 0) > 0) {
  }
  EXPECT_EQ(said(*other, "x"), "it has ended");
}

TEST(Dialogue, BelongsToTheProcessThatStartedIt) {
  auto dialogue = shell(kEcho);
  ASSERT_TRUE(dialogue);
  test::runInChild([&] {
    EXPECT_FALSE(dialogue->isOwn());
    EXPECT_EQ(said(*dialogue, "child"), "it has ended");
  });
  EXPECT_TRUE(dialogue->isOwn());
  EXPECT_EQ(said(*dialogue, "parent"), "answer: <parent>");
}

TEST(Dialogue, ChangesItsOwner) {
  auto first = shell(kEcho);
  ASSERT_TRUE(first);
  Dialogue second = std::move(*first);
  first.reset();
  EXPECT_EQ(said(second, "x"), "answer: <x>");
}

}  // namespace

}  // namespace kolum
