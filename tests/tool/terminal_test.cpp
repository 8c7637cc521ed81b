// Output at a terminal, and interruption by the user.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>

#include "base/shell.h"
#include "support/temp_dir.h"
#include "terminal/interruption.h"
#include "tool/kolum_run.h"

namespace kolum::test {
namespace {

using testing::HasSubstr;
using testing::Not;

// What kolum writes to standard output and error at its own terminal; REDIRECTION as for kolum().
std::string atTerminal(const std::string& arguments, const Environment& environment = {},
                       const std::string& redirection = "") {
  RunOptions options;
  options.environment = {{"TERM", "xterm"}, {"NO_COLOR", ""}};
  for (const auto& [name, value] : environment) options.environment[name] = value;
  const std::string command = shellWord(KOLUM_PROGRAM) + " " + arguments + redirection;
  return mustRun({"script", "--quiet", "--return", "--command", command, "/dev/null"}, options);
}

std::string listOf(const TempDir& folder, std::size_t count, const std::string& name) {
  std::string names;
  for (std::size_t i = 0; i < count; ++i) names += name + "\n";
  return folder.write("list", names);
}

// The library prints no lines about this file; with sanitizers its lines would be shown.
std::string listOf(const TempDir& folder, std::size_t count) {
  return listOf(folder, count, samples() + "Videos/holiday.avi");
}

TEST(Colours, MarkTitlesAndLabelsAtATerminal) {
  const std::string said = atTerminal("cover " + shellWord(samples() + "Photos"));
  EXPECT_THAT(said, HasSubstr("\x1b[1m" + samples() + "Photos\x1b[0m"));
  EXPECT_THAT(said, HasSubstr("\x1b[2mCover  \x1b[0m(none)"));
  EXPECT_THAT(atTerminal("extensions --kinds photo"), HasSubstr("\x1b[1mKind"));
}

TEST(Colours, CanBeTurnedOff) {
  const std::string cover = "cover " + shellWord(samples() + "Photos");
  EXPECT_THAT(atTerminal(cover, {{"NO_COLOR", "1"}}), Not(HasSubstr("\x1b")));
  EXPECT_THAT(atTerminal(cover, {{"TERM", "dumb"}}), Not(HasSubstr("\x1b")));
  EXPECT_THAT(atTerminal("--json " + cover), Not(HasSubstr("\x1b")));
  EXPECT_THAT(kolum({"cover", samples() + "Photos"}, {.environment = {{"TERM", "xterm"}}}).out,
              Not(HasSubstr("\x1b")));
}

// Progress appears after half a second. A reader that pauses keeps even a fast run busy for longer.
constexpr const char* kPausingReader = " | (head -c 1; sleep 0.6; cat)";

TEST(Progress, IsShownWhileResultsGoElsewhereAndThenCleared) {
  const TempDir folder;
  const std::string said =
      atTerminal("probe --files-from '" + listOf(folder, 2000) + "'", {},
                 std::string(kPausingReader) + " >'" + folder.path("results") + "'");
  EXPECT_THAT(said, HasSubstr("  holiday.avi"));
  EXPECT_THAT(said, testing::EndsWith("\r\x1b[K"));
}

// The progress lines for a film named NAME at a terminal with this many columns, without control
// sequences.
std::vector<std::string> progressAt(int columns, const std::string& name) {
  const TempDir folder;
  std::filesystem::copy(samples() + "Videos/holiday.avi", folder.path(name));
  const std::string list = listOf(folder, 2000, folder.path(name));
  const std::string said = mustRun({"script", "--quiet", "--return", "--command",
                                    "stty cols " + std::to_string(columns) + "; " +
                                        shellWord(KOLUM_PROGRAM) + " probe --files-from '" + list +
                                        "'" + kPausingReader + " >'" + folder.path("results") + "'",
                                    "/dev/null"},
                                   {.environment = {{"TERM", "xterm"}}});
  std::vector<std::string> lines;
  const std::string clear = "\r\x1b[K";
  for (std::size_t at = said.find(clear); at != std::string::npos;) {
    const std::size_t next = said.find(clear, at + 1);
    lines.push_back(said.substr(at + clear.size(), next - at - clear.size()));
    at = next;
  }
  EXPECT_THAT(said, testing::EndsWith(clear));
  std::erase(lines, "");
  EXPECT_FALSE(lines.empty());
  return lines;
}

TEST(Progress, FillsAtMostOneLine) {
  const std::string name = std::string(150, 'n') + ".avi";
  for (const int columns : {20, 80, 132}) {
    for (const std::string& line : progressAt(columns, name)) {
      EXPECT_EQ(line.size(), static_cast<std::size_t>(columns) - 1) << line;
      EXPECT_THAT(line, testing::StartsWith("File "));
    }
  }
}

TEST(Progress, CutsWideCharactersAtTheTerminalsEdge) {
  std::string name;
  for (int i = 0; i < 40; ++i) name += "\xE9\x9F\xB3";  // two columns, three bytes
  for (const std::string& line : progressAt(40, name + ".avi")) {
    const std::size_t start = line.find("\xE9");
    ASSERT_NE(start, std::string::npos) << line;
    const std::string shown = line.substr(start);
    EXPECT_EQ(shown.size() % 3, 0U);
    EXPECT_EQ(shown, name.substr(0, (39 - start) / 2 * 3));
  }
}

TEST(Progress, CountsNoColumnForCombiningCharacters) {
  std::string name;
  for (int i = 0; i < 50; ++i) name += "e\xCC\x81";  // a letter and its accent
  for (const std::string& line : progressAt(40, name + ".avi")) {
    const std::size_t start = line.find("e\xCC");
    ASSERT_NE(start, std::string::npos) << line;
    EXPECT_EQ(line.substr(start), name.substr(0, (39 - start) * 3));
  }
}

TEST(Progress, IsNotShownOnTerminalsThatCannotReplaceALine) {
  const TempDir folder;
  const std::string said =
      atTerminal("probe --files-from '" + listOf(folder, 2000) + "'", {{"TERM", "dumb"}},
                 std::string(kPausingReader) + " >'" + folder.path("results") + "'");
  EXPECT_EQ(said, "");
}

TEST(Progress, IsNotWrittenToFiles) {
  const TempDir folder;
  const std::string list = listOf(folder, 2000);
  EXPECT_EQ(kolum({"probe", "--files-from", list}, {}, kPausingReader).err, "");
}

TEST(Progress, IsNotMixedWithResults) {
  const TempDir folder;
  const std::string list = listOf(folder, 5000);  // keeps the tool busy for more than a second
  EXPECT_THAT(atTerminal("probe --files-from '" + list + "'"), Not(HasSubstr("\x1b[K")));
}

TEST(Interruption, EndsTheToolBetweenFiles) {
  const TempDir folder;
  const RunResult run =
      kolum::test::run({"timeout", "--signal=INT", "--preserve-status", "1", KOLUM_PROGRAM, "probe",
                        "--json", "--files-from", listOf(folder, 100'000)});
  EXPECT_EQ(run.status, 128 + SIGINT);
  EXPECT_EQ(run.err, "");
  const auto lines = Outcome{0, run.out, ""}.json();  // every line is complete
  EXPECT_FALSE(lines.empty());
  EXPECT_LT(lines.size(), 100'000U);
}

// Describes COUNT songs, two at a time, of which each takes a second. SIGTERM comes when one is
// being described.
RunResult interruptedAmongSongs(std::size_t count) {
  const TempDir folder;
  const std::string program = copyOfKolum(folder.folder());
  const std::string tool = folder.path("appliance/bin/dsf2flac");
  const std::string begun = folder.path("begun");
  std::filesystem::create_directories(folder.path("appliance/bin"));
  folder.write("appliance/bin/dsf2flac", "#!/bin/sh\n: >" + shellWord(begun) + "\nsleep 1\n");
  std::filesystem::permissions(tool, std::filesystem::perms::owner_all);
  const std::string list = listOf(folder, count, samples() + "Music/Tones/04-silence.dsf");
  return run({"bash", "-c",
              shellWord(program) + " probe --in-process --json --jobs 2 --files-from " +
                  shellWord(list) + " & until [ -e " + shellWord(begun) +
                  " ]; do sleep 0.05; done; kill -TERM $!; wait $!"});
}

TEST(Interruption, LetsTheCurrentFilesEnd) {
  const RunResult run = interruptedAmongSongs(4);
  EXPECT_EQ(run.status, 128 + SIGTERM);
  EXPECT_FALSE((Outcome{0, run.out, ""}.json().empty()));
}

TEST(Interruption, LetsNoFurtherFilesBegin) {
  const RunResult run = interruptedAmongSongs(100);
  EXPECT_EQ(run.status, 128 + SIGTERM);
  EXPECT_LE((Outcome{0, run.out, ""}.json().size()), 2U);
}

// Otherwise it would leave behind what it is writing.
TEST(InterruptionDeathTest, WaitsForTheNextCheckWhenTheTerminalIsClosed) {
  const auto hangUp = [] {
    const tool::Interruption interruption;
    std::raise(SIGHUP);
    try {
      tool::Interruption::check();
    } catch (const tool::Interrupted& interrupted) {
      _exit(interrupted.signal);
    }
    _exit(0);
  };
  EXPECT_EXIT(hangUp(), testing::ExitedWithCode(SIGHUP), "");
}

TEST(Interruption, StaysIgnoredIfTheCallerIgnoresIt) {
  const TempDir folder;
  const std::string list = listOf(folder, 300);
  const std::string script =
      "trap '' INT; \"$0\" cover --json --files-from \"$1\" & kill -INT $!; wait $!";
  const RunResult run = kolum::test::run({"sh", "-c", script, KOLUM_PROGRAM, list});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ((Outcome{0, run.out, ""}.json().size()), 300U);
}

}  // namespace
}  // namespace kolum::test
