// Behaviour that all commands share: help, exit status, where output goes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "support/temp_dir.h"
#include "tool/kolum_run.h"

namespace kolum::test {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::vector<std::string> commandNames() {
  const Outcome help = kolum({"--help"});
  std::vector<std::string> names;
  const std::string list = help.out.substr(help.out.find("Commands:"));
  const std::regex row("\n  ([a-z-]+) +[A-Z]");
  for (auto match = std::sregex_iterator(list.begin(), list.end(), row);
       match != std::sregex_iterator(); ++match) {
    names.push_back((*match)[1]);
  }
  return names;
}

TEST(Help, ListsTheCommands) {
  const Outcome run = kolum({"--help"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("Usage: kolum"));
  EXPECT_THAT(commandNames(), testing::IsSupersetOf({"probe", "classify", "ids", "extensions",
                                                     "notify", "config", "send"}));
}

TEST(Help, DescribesEveryCommandWithAnExample) {
  for (const std::string& name : commandNames()) {
    const Outcome run = kolum({name, "--help"});
    EXPECT_EQ(run.status, 0) << name;
    EXPECT_THAT(run.out, HasSubstr("Example")) << name;
    EXPECT_THAT(run.out, HasSubstr("kolum " + name)) << name;
    EXPECT_THAT(run.out, HasSubstr("--json")) << name;
    EXPECT_EQ(run.err, "") << name;
  }
}

TEST(Help, IsACommand) {
  EXPECT_EQ(kolum({"help"}).out, kolum({"--help"}).out);
  EXPECT_EQ(kolum({"help", "probe"}).out, kolum({"probe", "--help"}).out);
  const Outcome nested = kolum({"help", "config", "set"});
  EXPECT_EQ(nested.status, 0) << nested.err;
  EXPECT_EQ(nested.out, kolum({"config", "set", "--help"}).out);
  const Outcome unknown = kolum({"help", "prob"});
  EXPECT_EQ(unknown.status, 2);
  EXPECT_EQ(unknown.err,
            "kolum: no command \"prob\" (did you mean \"probe\"?); see kolum help --help\n");
}

TEST(Version, IsPrintedForTheShortOption) {
  const Outcome run = kolum({"-V"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, kolum({"--version"}).out);
}

// Releases of the parser format their own help differently.
TEST(Help, HasTheLayoutThatTheManualPagesExpect) {
  const Outcome album = kolum({"artwork", "album", "--help"});
  EXPECT_THAT(album.out, HasSubstr("\nUsage: kolum artwork album [OPTIONS] BASE ARTIST ALBUM\n"
                                   "\n"
                                   "Operands:\n"
                                   "  BASE                    The music thumbnails' folder\n"
                                   "  ARTIST                  The artist's name\n"
                                   "  ALBUM                   The album's name\n"
                                   "\n"
                                   "Options:\n"
                                   "  -h,--help               Shows this help\n"));
  const Outcome probe = kolum({"probe", "--help"});
  EXPECT_THAT(probe.out, HasSubstr("\nUsage: kolum probe [OPTIONS] [FILE...]\n"));
  EXPECT_THAT(probe.out, HasSubstr("\n  FILE ...                Files; "));
  EXPECT_THAT(probe.out, HasSubstr("\n  --audio-stream N        The audio stream"));
  EXPECT_THAT(kolum({"artwork", "--help"}).out,
              HasSubstr("\nUsage: kolum artwork [OPTIONS] COMMAND\n"));
}

TEST(Version, IsPrinted) {
  const Outcome run = kolum({"--version"});
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(std::regex_match(run.out, std::regex("kolum [0-9]+\\.[0-9]+\\.[0-9]+\n"))) << run.out;
}

TEST(Usage, ReturnsTwoAndAHintForMistakes) {
  const std::vector<std::vector<std::string>> mistakes = {
      {},
      {"no-such-command"},
      {"--no-such-option"},
      {"probe"},
      {"probe", "--no-such-option", "a.mp4"},
      {"probe", "--audio-stream", "x", "a.mp4"},
      {"probe", "--audio-stream", "-1", "a.mp4"},
      {"classify"},
      {"classify", "--kinds", "books", "a.mp4"},
      {"classify", "--mask", "video", "a.mp4"},
      {"classify", "--mask", "video=-1", "a.mp4"},
      {"classify", "--tag", "256", "a.mp4"},
      {"ids"},
      {"ids", "planets"},
      {"ids", "formats", "--ffmpeg"},
      {"ids", "codecs", "--codec", "H264"},
      {"ids", "profiles", "--codec", "NOTHING"},
      {"extensions", "--xml", "--json"},
      {"notify"},
      {"notify", "wait", "--seconds", "-1"},
      {"config"},
      {"config", "set", "THUMBNAIL", "QUALITY"},
      {"send"},
      {"send", "x"},
      {"send", "1", "2", "--text", "a"},
      {"send", "4294967296"},
      {"keyframe", "-1", "a.mkv"},
      {"keyframe", "1"},
      {"info", "--seek", "0", "a.mkv"},
      {"artwork"},
      {"artwork", "album", "base", "artist"},
      {"geocode", "1"},
  };
  for (const auto& arguments : mistakes) {
    const Outcome run = kolum(arguments);
    const std::string row = testing::PrintToString(arguments);
    EXPECT_EQ(run.status, 2) << row;
    EXPECT_THAT(run.err, StartsWith("kolum: ")) << row;
    EXPECT_THAT(run.err, HasSubstr("--help")) << row;
    EXPECT_EQ(run.out, "") << row;
  }
}

TEST(Usage, NamesMistakesAndTheRelevantHelp) {
  const struct {
    std::vector<std::string> arguments;
    const char* message;
  } rows[] = {
      {{}, "COMMAND is required; see kolum --help"},
      {{"--json"}, "COMMAND is required; see kolum --help"},
      {{"xyzzy", "a.mp4"}, "no command \"xyzzy\"; see kolum --help"},
      {{"--xyzzy"}, "unexpected argument \"--xyzzy\"; see kolum --help"},
      {{"probe"}, "FILE is required; see kolum probe --help"},
      {{"probe", "--files-from", "a", "--files-from", "b"},
       "--files-from is given more than once; see kolum probe --help"},
      {{"probe", "--files-from"}, "--files-from needs a value; see kolum probe --help"},
      {{"notify", "wait", "--seconds"}, "--seconds needs a value; see kolum notify wait --help"},
      {{"probe", "--json=x", "a"}, "--json takes no value; see kolum probe --help"},
      {{"dlna", "--audio-stream", "-1", "a.mp4"},
       "--audio-stream takes a number from 0 to 2147483647, not \"-1\"; see kolum dlna --help"},
      {{"notify"}, "COMMAND is required; see kolum notify --help"},
      {{"notify", "\x1bxyzzy"}, "no command \"\\x1bxyzzy\"; see kolum notify --help"},
      {{"notify", "wait", "--seconds", "soon"},
       "--seconds takes a number from 0 to 1000000000, not \"soon\"; see kolum notify wait --help"},
      {{"artwork", "album", "base"}, "ARTIST is required; see kolum artwork album --help"},
      {{"send", "1", "18446744073709551615"},
       "\"18446744073709551615\" is not a 64-bit number; see kolum send --help"},
  };
  for (const auto& row : rows) {
    const Outcome run = kolum(row.arguments);
    EXPECT_EQ(run.status, 2) << row.message;
    EXPECT_EQ(run.err, "kolum: " + std::string(row.message) + "\n");
  }
}

TEST(Usage, SuggestsTheNearestWordForMistypedOnes) {
  const struct {
    std::vector<std::string> arguments;
    const char* meant;
  } rows[] = {
      {{"prob", "a.mp4"}, "probe"},
      {{"porbe", "a.mp4"}, "probe"},
      {{"Probe", "a.mp4"}, "probe"},
      {{"geocod", "1", "1"}, "geocode"},
      {{"dfs", "a.dsf"}, "dsf"},
      {{"notify", "pots"}, "post"},
      {{"config", "shwo"}, "show"},
      {{"--jsn"}, "--json"},
      {{"probe", "--jsno", "a"}, "--json"},
      {{"probe", "--audio-steam=1", "a"}, "--audio-stream"},
  };
  for (const auto& row : rows) {
    const Outcome run = kolum(row.arguments);
    EXPECT_EQ(run.status, 2) << row.meant;
    EXPECT_THAT(run.err, HasSubstr(" (did you mean \"" + std::string(row.meant) + "\"?); see "));
  }
}

TEST(Usage, SuggestsNothingForUnrecognisableWords) {
  const std::vector<std::vector<std::string>> rows = {
      {"xyzzy"}, {"go"}, {"--xyzzy"}, {"config", "xyzzy"}, {std::string(10000, 'p')}};
  for (const auto& arguments : rows) {
    const Outcome run = kolum(arguments);
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, Not(HasSubstr("did you mean")));
  }
}

TEST(Usage, SuggestsProbeForFileInsteadOfCommand) {
  const TempDir folder;
  folder.write("song", "");
  const struct {
    const char* word;
    const char* meant;
  } rows[] = {
      {"movie.mp4", "kolum probe movie.mp4"}, {"Movies/", "kolum probe Movies/"},
      {"song", "kolum probe song"},           {"my movie.mp4", "kolum probe FILE"},
      {"[a].mp4", "kolum probe FILE"},
  };
  for (const auto& row : rows) {
    const Outcome run = kolum({row.word}, {.folder = folder.folder()});
    EXPECT_EQ(run.status, 2) << row.word;
    EXPECT_EQ(run.err, "kolum: no command \"" + std::string(row.word) + "\" (did you mean \"" +
                           row.meant + "\"?); see kolum --help\n");
  }
}

TEST(Results, FailIfTheyCannotBeWritten) {
  const std::vector<std::vector<std::string>> commands = {
      {"--help"}, {"--version"}, {"ids", "codecs"}, {"classify", "--json", "a.mp4"}};
  for (const auto& arguments : commands) {
    const Outcome run = kolum(arguments, {}, ">/dev/full");
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.err, HasSubstr("kolum: cannot write the results: No space left on device"));
  }
}

TEST(Results, FailIfStandardOutputIsClosed) {
  const Outcome run = kolum({"ids", "codecs"}, {}, ">&-");
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("kolum: cannot write the results"));
}

TEST(Results, EndQuietlyIfTheReaderExits) {
  const RunResult pipe = run({"bash", "-c",
                              "set -o pipefail; yes a.mp4 | head -n 100000 | \"$0\" classify "
                              "--json - | head -n 1",
                              KOLUM_PROGRAM});
  EXPECT_EQ(pipe.status, 1);
  EXPECT_THAT(pipe.out, testing::MatchesRegex("[^\n]*\n"));
  EXPECT_EQ(pipe.err, "");
}

TEST(Results, AppearIfStandardErrorIsClosed) {
  const Outcome run = kolum({"classify", "a.mp4"}, {}, "2>&-");
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.out, HasSubstr("video"));
}

TEST(Messages, AreDroppedIfStandardErrorIsClosed) {
  const TempDir folder;
  const Outcome run = kolum({"probe", folder.path("missing.mp4")}, {}, "2>&-");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
}

TEST(Descriptors, FewAreEnough) {
  const std::string photo = " '" + samples() + "Photos/pattern.jpg'";
  for (const Outcome& run : {kolumWithDescriptors(12, "probe --json" + photo),
                             kolumWithDescriptors(8, "probe --in-process --json" + photo)}) {
    EXPECT_EQ(run.status, 0);
    ASSERT_EQ(run.json().size(), 1U);
    EXPECT_EQ(run.json()[0]["width"], 1600);
  }
}

TEST(Descriptors, FailWithAReasonIfUsedUp) {
#ifdef KOLUM_SANITIZED
  GTEST_SKIP() << "sanitizers use descriptors themselves";
#endif
  const Outcome none = kolumWithDescriptors(5, "probe '" + samples() + "Photos/pattern.jpg'");
  EXPECT_EQ(none.status, 1);
  EXPECT_THAT(none.err, StartsWith("kolum: Too many open files\n"));
}

// The library's song probe prints a line to standard error, its video probe prints to standard
// output.
TEST(LibraryLines, NeverReachTheToolsOutput) {
  const Outcome run =
      kolum({"probe", "--json", samples() + "Videos", samples() + "Music/Tones/01-first-tone.mp3"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_FALSE(run.json().empty());
#ifndef KOLUM_SANITIZED
  EXPECT_EQ(run.err, "");
#endif
}

TEST(LibraryLines, GoToStandardErrorOnRequest) {
  for (const auto& [arguments, environment] :
       std::vector<std::pair<std::vector<std::string>, Environment>>{
           {{"probe", "--debug", "--json", samples() + "Videos/harbour.mp4"}, {}},
           {{"probe", "--json", samples() + "Videos/harbour.mp4"}, {{"KO_LOG_LEVEL", "7"}}}}) {
    const Outcome run = kolum(arguments, {.environment = environment});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.json().size(), 1U);
    EXPECT_THAT(run.err, HasSubstr("com.apple.quicktime.creationdate"));
  }
}

}  // namespace
}  // namespace kolum::test
