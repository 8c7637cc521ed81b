// JSON and CSV at a terminal: what files are called and what their tags say must not control it.
#include "terminal/data_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "base/shell.h"
#include "support/temp_dir.h"
#include "terminal/text.h"
#include "tool/kolum_run.h"

namespace kolum::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

// Deletes, clears (C1), turns the direction round, and, above U+FFFF, is not to be seen.
constexpr const char* kHostile =
    "a\x7F\xC2\x9B"
    "2J\xE2\x80\xAE"
    "gpj\xF3\xA0\x80\x81z\xF0\x9F\x8E\xAC";

TEST(JsonForTerminal, EscapesWhatIsNotSafe) {
  EXPECT_EQ(tool::jsonForTerminal("\"\x7F\""), "\"\\u007f\"");
  EXPECT_EQ(tool::jsonForTerminal("\"\xC2\x80\xC2\x9F\""), "\"\\u0080\\u009f\"");
  EXPECT_EQ(tool::jsonForTerminal("\"\xE2\x80\xAE\xE2\x81\xA6\xEF\xBB\xBF\""),
            "\"\\u202e\\u2066\\ufeff\"");
}

TEST(JsonForTerminal, EscapesAboveTheFirstPlaneByPairs) {
  EXPECT_EQ(tool::jsonForTerminal("\"\xF3\xA0\x80\x81\""), "\"\\udb40\\udc01\"");
  EXPECT_EQ(tool::jsonForTerminal("\"\xF0\x9D\x85\xB3\""), "\"\\ud834\\udd73\"");
}

TEST(JsonForTerminal, LeavesAllElseAsItIs) {
  const std::string text =
      "{\"file\":\"Fa\xC3\xA7"
      "ade \\\\ \xF0\x9F\x8E\xAC\\n.mkv\",\"n\":[1,2.5]}";
  EXPECT_EQ(tool::jsonForTerminal(text), text);
}

TEST(JsonForTerminal, MeansTheSame) {
  const std::string text = json{{std::string("key") + kHostile, kHostile}, {"\\", "\\\x1b"}}.dump();
  const std::string shown = tool::jsonForTerminal(text);
  EXPECT_NE(shown, text);
  EXPECT_EQ(json::parse(shown), json::parse(text));
  for (std::string_view rest = shown; !rest.empty();) {
    const Utf8Character character = firstUtf8Character(rest);
    ASSERT_TRUE(character.length > 0 && tool::isSafe(character.code));
    rest.remove_prefix(character.length);
  }
}

TEST(CsvForTerminal, ReplacesWhatIsNotSafeButTheLineEnd) {
  EXPECT_EQ(tool::csvForTerminal("a,\"b\nc\x1b[2J\",\xFF\xC2\x9B\r\n"),
            "a,\"b\xEF\xBF\xBD"
            "c\xEF\xBF\xBD[2J\",\xEF\xBF\xBD\xEF\xBF\xBD\r\n");
  EXPECT_EQ(tool::csvForTerminal("C:\\film,\xF0\x9F\x8E\xAC\r\n"), "C:\\film,\xF0\x9F\x8E\xAC\r\n");
}

TEST(Printable, EscapesAboveTheFirstPlaneWithAllDigits) {
  EXPECT_EQ(tool::printable("\xF3\xA0\x80\x81"
                            "1"),
            "\\U000e00011");
}

// --- The program

class AtTerminal : public testing::Test {
 protected:
  AtTerminal() { std::filesystem::copy(samples() + "Videos/holiday.avi", file_); }
  std::string shown(const std::string& arguments) const {
    RunOptions options;
    options.environment = {{"TERM", "xterm"}, {"NO_COLOR", "1"}};
    return mustRun(
        {"script", "--quiet", "--return", "--command",
         shellWord(KOLUM_PROGRAM) + " " + arguments + " " + shellWord(file_), "/dev/null"},
        options);
  }

  const TempDir folder_;
  const std::string file_ = folder_.path(std::string(kHostile) + ".avi");
};

void expectHarmless(const std::string& said) {
  for (const char* part : {"\x7F", "\xC2\x9B", "\xE2\x80\xAE", "\xF3\xA0\x80\x81", "\x1b"})
    EXPECT_THAT(said, Not(HasSubstr(part)));
}

TEST_F(AtTerminal, JsonKeepsNamesAndIsHarmless) {
  const std::string said = shown("--json probe");
  expectHarmless(said);
  EXPECT_EQ(json::parse(said).at("file"), file_);
}

TEST_F(AtTerminal, CsvIsHarmless) {
  const std::string said = shown("probe --csv");
  expectHarmless(said);
  EXPECT_THAT(said, HasSubstr("\xEF\xBF\xBD"
                              "2J\xEF\xBF\xBDgpj"));
}

TEST_F(AtTerminal, NamesWithNulsAreHarmless) {
  const std::string library = shellWord(folder_.path("library.db"));
  const std::string said = shown("library stale --null --library " + library + " --");
  expectHarmless(said);
  EXPECT_THAT(said, HasSubstr("\\u202egpj"));
}

// Programs read them.
TEST_F(AtTerminal, JsonAndCsvElsewhereAreToTheLetter) {
  EXPECT_THAT(kolum({"probe", "--csv", file_}).out, HasSubstr(kHostile));
  EXPECT_THAT(kolum({"probe", "--json", file_}).out, HasSubstr(kHostile));
}

}  // namespace
}  // namespace kolum::test
