// File names: lists of them, hostile ones, and how they are printed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>

#include "support/temp_dir.h"
#include "tool/kolum_run.h"

namespace kolum::test {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

// Classification accepts any name, so its results show which names the tool read.
std::vector<std::string> classified(const std::vector<std::string>& arguments,
                                    const RunOptions& options = {}) {
  std::vector<std::string> all = {"classify", "--json"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  const Outcome run = kolum(all, options);
  EXPECT_EQ(run.status, 0) << run.err;
  std::vector<std::string> names;
  for (const auto& line : run.json()) names.push_back(line["file"]);
  return names;
}

TEST(FileNames, ComeFromOperandsInOrder) {
  EXPECT_THAT(classified({"b.mp4", "a.mp4", "b.mp4"}), ElementsAre("b.mp4", "a.mp4", "b.mp4"));
}

TEST(FileNames, AreSeparatedByNewlines) {
  EXPECT_THAT(classified({"-"}, {.input = "a.mp4\nb c.mp4\n\n\tlast.mp4"}),
              ElementsAre("a.mp4", "b c.mp4", "\tlast.mp4"));
}

TEST(FileNames, AreSeparatedByNulIfOneOccurs) {
  EXPECT_THAT(classified({"-"}, {.input = "a\nb.mp4\0\0c.mp4\0"s}),
              ElementsAre("a\nb.mp4", "c.mp4"));
  EXPECT_THAT(classified({"-"}, {.input = "a\nb.mp4\0c.mp4"s}), ElementsAre("a\nb.mp4", "c.mp4"));
}

TEST(FileNames, FromStandardInputReplaceTheDash) {
  EXPECT_THAT(classified({"first.mp4", "-", "last.mp4"}, {.input = "middle.mp4\n"}),
              ElementsAre("first.mp4", "middle.mp4", "last.mp4"));
}

TEST(FileNames, ComeFromAListFile) {
  const TempDir folder;
  const std::string newlines = folder.write("newlines", "a.mp4\nb.mp4\n");
  const std::string nuls = folder.write("nuls", "a\n.mp4\0b.mp4\0"s);
  EXPECT_THAT(classified({"--files-from", newlines}), ElementsAre("a.mp4", "b.mp4"));
  EXPECT_THAT(classified({"--files-from", nuls, "first.mp4"}),
              ElementsAre("first.mp4", "a\n.mp4", "b.mp4"));
  EXPECT_THAT(classified({"--files-from", "-"}, {.input = "a.mp4"}), ElementsAre("a.mp4"));
}

TEST(FileNames, MayHoldNewlinesInNulSeparatedLists) {
  EXPECT_THAT(classified({"-0", "-"}, {.input = "a\nb.mp4"}), ElementsAre("a\nb.mp4"));
  EXPECT_THAT(classified({"--null", "-"}, {.input = "a\nb.mp4\0c.mp4\0"s}),
              ElementsAre("a\nb.mp4", "c.mp4"));
}

TEST(FileNames, MayBeAnEmptyList) {
  EXPECT_THAT(classified({"-"}), ElementsAre());
  EXPECT_THAT(classified({"--files-from", "/dev/null"}), ElementsAre());
}

TEST(FileNames, FailIfTheListCannotBeRead) {
  const TempDir folder;
  const Outcome missing = kolum({"classify", "--files-from", folder.path("missing")});
  EXPECT_EQ(missing.status, 1);
  EXPECT_THAT(missing.err, HasSubstr(folder.path("missing") + ": No such file or directory"));
  const Outcome isFolder = kolum({"classify", "--files-from", folder.folder(), "a.mp4"});
  EXPECT_EQ(isFolder.status, 1);
  EXPECT_THAT(isFolder.out, HasSubstr("a.mp4"));
}

// Runs kolum with a process that waits for each answer before it sends the next name, through
// pipes. Each name ends with END, in printf's notation; each answer is a line.
std::string inTurn(const std::string& arguments, const std::string& end,
                   const std::vector<std::string>& names) {
  const std::string script = "coproc K { exec '" KOLUM_PROGRAM "' " + arguments +
                             "; }\npid=$K_PID\n"
                             "for name in \"$@\"; do\n"
                             "  printf '%s" +
                             end +
                             "' \"$name\" >&\"${K[1]}\"\n"
                             "  IFS= read -r -t 20 line <&\"${K[0]}\" || exit 9\n"
                             "  printf '%s\\n' \"$line\"\n"
                             "done\n"
                             "eval \"exec ${K[1]}>&-\"\n"
                             "wait \"$pid\"\n";
  std::vector<std::string> command = {"bash", "-c", script, "bash"};
  command.insert(command.end(), names.begin(), names.end());
  const RunResult result = run(command);
  EXPECT_EQ(result.status, 0) << result.err;
  return result.out;
}

TEST(FileNames, FromAListAreAnsweredAsTheyArrive) {
  const std::vector<std::string> names = {"a.mp4", "b c.mp3", "caf\xE9.jpg"};
  const std::string answers = kolum({"classify", "--json", "a.mp4", "b c.mp3", "caf\xE9.jpg"}).out;
  EXPECT_EQ(inTurn("classify --json -", "\\n", names), answers);
  EXPECT_EQ(inTurn("classify --json -", "\\0", names), answers);
  EXPECT_EQ(inTurn("classify --json -0 -", "\\0", names), answers);
  EXPECT_EQ(inTurn("classify --json --files-from -", "\\n", names), answers);
}

TEST(FileNames, FromAListAreProbedAsTheyArrive) {
  const std::vector<std::string> names = {samples() + "Photos/pattern.jpg",
                                          samples() + "Videos/harbour.mp4"};
  const std::string answers = kolum({"probe", "--json", names[0], names[1]}).out;
  EXPECT_EQ(inTurn("probe --json -", "\\n", names), answers);
  EXPECT_EQ(inTurn("probe --json -", "\\0", names), answers);
}

TEST(FileNames, CanBeInterruptedWhileWaitingForThem) {
  const RunResult result = run({"bash", "-c",
                                "sleep 2 | timeout --signal=INT --preserve-status "
                                "0.5 '" KOLUM_PROGRAM "' probe -; exit $?"});
  EXPECT_EQ(result.status, 128 + SIGINT);
}

TEST(FileNames, MayArriveInPieces) {
  const RunResult result =
      run({"bash", "-c",
           "{ printf a.m; sleep 0.2; printf 'p4\\nb'; sleep 0.2; printf '.mp3'; } | "
           "'" KOLUM_PROGRAM "' classify --json -"});
  std::vector<std::string> names;
  for (const auto& line : Outcome{0, result.out, ""}.json()) names.push_back(line["file"]);
  EXPECT_THAT(names, ElementsAre("a.mp4", "b.mp3"));
}

TEST(FileNames, AreRejectedIfAListMixesNulAndNewline) {
  std::string list;
  for (int i = 0; i < 50'000; ++i) list += "a\n";
  const Outcome run = kolum({"classify", "-"}, {.input = list + "b\0c\n"s});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("kolum: standard input: some names end with newlines and some "
                                 "with NUL; use -0\n"));
}

TEST(FileNames, AreRejectedIfNeverTerminated) {
  const RunResult result =
      run({"bash", "-c", "head -c 100M /dev/zero | tr '\\0' x | '" KOLUM_PROGRAM "' classify -"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("kolum: standard input: File name too long\n"));
}

TEST(FileNames, AreNotInterpretedByTheParser) {
  const std::vector<std::string> names = {
      "[a.mp4,b.mp4]", "[x]",      "{a}.mp4", "++",       "%%",          "probe",
      "classify",      "\x01.mp4", "a=b.mp4", " a .mp4 ", "'q\"uote.mp4"};
  EXPECT_THAT(classified(names), testing::ElementsAreArray(names));
}

TEST(FileNames, AfterTwoDashesMayBeginWithADash) {
  EXPECT_THAT(classified({"a.mp4", "--", "-b.mp4", "--json", "--", "[c]"}),
              ElementsAre("a.mp4", "-b.mp4", "--json", "--", "[c]"));
}

TEST(FileNames, InAListMayBeginWithADash) {
  EXPECT_THAT(classified({"-"}, {.input = "-b.mp4\n--help\n-\n"}),
              ElementsAre("-b.mp4", "--help", "-"));
}

TEST(FileNames, MayHaveAHundredKilobytes) {
  const std::string name = std::string(100000, 'x') + ".mp4";
  EXPECT_THAT(classified({name}), ElementsAre(name));
  const Outcome run = kolum({"probe", "-"}, {.input = name});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.err, HasSubstr("File name too long"));
}

struct ShownName {
  std::string name;
  std::string text;       // in text output and messages
  std::string json;       // "file"
  std::string fileBytes;  // empty if there is no such key
};

const ShownName kShownNames[] = {
    {"plain.mp4", "plain.mp4", "plain.mp4", ""},
    {"caf\xC3\xA9.mp4", "caf\xC3\xA9.mp4", "caf\xC3\xA9.mp4", ""},
    {"caf\xE9.mp4", "caf\\xe9.mp4", "caf\xEF\xBF\xBD.mp4", "caf%E9.mp4"},
    {"new\nline.mp4", "new\\nline.mp4", "new\nline.mp4", ""},
    {"tab\treturn\r.mp4", "tab\\treturn\\r.mp4", "tab\treturn\r.mp4", ""},
    {"red\x1b[31m.mp4", "red\\x1b[31m.mp4", "red\x1b[31m.mp4", ""},
    {"back\\slash.mp4", "back\\\\slash.mp4", "back\\slash.mp4", ""},
    {"c1\xC2\x9B.mp4", "c1\\u009b.mp4", "c1\xC2\x9B.mp4", ""},
    {"gnp\xE2\x80\xAE"
     "4pm.mp4",
     "gnp\\u202e4pm.mp4",
     "gnp\xE2\x80\xAE"
     "4pm.mp4",
     ""},
    {"overlong\xC0\xAF 100%.mp4", "overlong\\xc0\\xaf 100%.mp4",
     "overlong\xEF\xBF\xBD\xEF\xBF\xBD 100%.mp4", "overlong%C0%AF%20100%25.mp4"},
    {"cut\xE2\x82", "cut\\xe2\\x82", "cut\xEF\xBF\xBD", "cut%E2%82"},
    {"quote\".mp4", "quote\".mp4", "quote\".mp4", ""},
    {"delete\x7f.mp4", "delete\\x7f.mp4", "delete\x7f.mp4", ""},
};

TEST(ShownNames, AreTheGivenNames) {
  const std::string folder = samples() + "Videos";
  const std::vector<std::vector<std::string>> commands = {
      {"probe"}, {"info"}, {"keyframe", "0"}, {"tracks"}, {"dlna"}, {"cover"}, {"classify"}};
  for (std::vector<std::string> command : commands) {
    command.insert(command.end(), {"--json", "holiday.avi", "./holiday.avi", "../Videos/missing"});
    const Outcome run = kolum(command, {.folder = folder});
    const auto lines = run.json();
    ASSERT_GE(lines.size(), 2U) << command[0];
    EXPECT_EQ(lines[0]["file"], "holiday.avi") << command[0];
    EXPECT_EQ(lines[1]["file"], "./holiday.avi") << command[0];
    if (run.status != 0) {
      EXPECT_THAT(run.err, HasSubstr("kolum: ../Videos/missing: ")) << command[0];
    }
  }
  const Outcome refused = kolum({"probe", "bars.png.txt", "text.mp4"}, {.folder = folder});
  EXPECT_EQ(refused.err,
            "kolum: bars.png.txt: No such file or directory\n"
            "kolum: text.mp4: No such file or directory\n");
  const TempDir own;
  own.write("text.mp4", "no video");
  EXPECT_THAT(kolum({"probe", "text.mp4"}, {.folder = own.folder()}).err,
              testing::EndsWith("kolum: text.mp4: not a media file\n"));
}

TEST(ShownNames, AreEscapedInText) {
  for (const ShownName& row : kShownNames) {
    const Outcome run = kolum({"classify", row.name});
    EXPECT_EQ(run.status, 0) << row.text;
    EXPECT_THAT(run.out, HasSubstr(" " + row.text + "\n")) << row.text;
  }
}

TEST(ShownNames, AreValidJsonAndLossless) {
  for (const ShownName& row : kShownNames) {
    const Outcome run = kolum({"classify", "--json", row.name});
    ASSERT_EQ(run.json().size(), 1U) << row.text;
    const nlohmann::json line = run.json().front();
    EXPECT_EQ(line["file"], row.json) << row.text;
    EXPECT_EQ(line.value("fileBytes", ""), row.fileBytes) << row.text;
  }
}

TEST(ShownNames, AreEscapedInMessages) {
  const TempDir folder;
  for (const ShownName& row : kShownNames) {
    const Outcome run = kolum({"probe", row.name}, {.folder = folder.folder()});
    EXPECT_EQ(run.status, 1) << row.text;
    EXPECT_THAT(run.err, HasSubstr("kolum: " + row.text + ": No such file or directory\n"));
  }
}

}  // namespace
}  // namespace kolum::test
