#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kolum/audio.h>
#include <kolum/frame.h>
#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "base/xml_node.h"
#include "dsf2flac/document.h"
#include "support/child_process.h"
#include "support/dsd_builder.h"
#include "support/media_factory.h"
#include "support/temp_dir.h"

namespace kolum::test {
namespace {

using testing::HasSubstr;

RunResult dsf2flac(const std::vector<std::string>& arguments) {
  std::vector<std::string> command = {KOLUM_DSF2FLAC};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return run(command);
}

// An element of the document that dsf2flac prints for a file.
std::string elementOf(const std::string& path, const char* element) {
  const RunResult result = dsf2flac({"-i", path, "-f"});
  EXPECT_EQ(result.status, 0) << result.err;
  return XMLNode::parseString(result.out, "ID3TAG").getChildNode(element).getText();
}

const std::vector<TextFrame> kFrames = {
    {"TIT2", "Title"}, {"TPE1", "Artist"}, {"TALB", "Album"}, {"TDRC", "2015"}, {"TRCK", "3/12"}};

TEST(Dsf2flac, ReportsNumbersAndTagsOfBothContainers) {
  const TempDir folder;
  const std::string tag = id3v2Tag(kFrames);
  for (const std::string& path : {folder.write("song.dsf", dsfFile({.tag = tag})),
                                  folder.write("song.dff", dffFile({.tag = tag}))}) {
    SCOPED_TRACE(path);
    EXPECT_EQ(elementOf(path, "TITLE"), "Title");
    EXPECT_EQ(elementOf(path, "ARTIST"), "Artist");
    EXPECT_EQ(elementOf(path, "ALBUM"), "Album");
    EXPECT_EQ(elementOf(path, "YEAR"), "2015");
    EXPECT_EQ(elementOf(path, "TRACK"), "3");
    EXPECT_EQ(elementOf(path, "DURATION"), "2");
    EXPECT_EQ(elementOf(path, "CHANNEL"), "2");
    EXPECT_EQ(elementOf(path, "FREQUENCY"), "2822400");
  }
}

TEST(Dsf2flac, ReportsTheRateOfTheOneBitSamples) {
  const TempDir folder;
  for (const std::uint32_t rate : {2822400U, 5644800U, 11289600U}) {
    const DsdFile file = {.sampleRate = rate, .channels = 1, .seconds = 1};
    EXPECT_EQ(elementOf(folder.write("song.dsf", dsfFile(file)), "FREQUENCY"),
              std::to_string(rate));
    EXPECT_EQ(elementOf(folder.write("song.dff", dffFile(file)), "FREQUENCY"),
              std::to_string(rate));
    EXPECT_EQ(elementOf(folder.path("song.dsf"), "CHANNEL"), "1");
  }
}

TEST(Dsf2flac, PrefersTheDffContainersTexts) {
  const TempDir folder;
  const std::string path =
      folder.write("song.dff", dffFile({.tag = id3v2Tag(kFrames)}, "Own Artist", ""));
  EXPECT_EQ(elementOf(path, "ARTIST"), "Own Artist");
  EXPECT_EQ(elementOf(path, "TITLE"), "Title");
}

TEST(Dsf2flac, LeavesOutMissingValues) {
  const TempDir folder;
  const RunResult result = dsf2flac({"-i", folder.write("song.dsf", dsfFile({})), "-f"});
  EXPECT_EQ(result.out,
            "<ID3TAG><DURATION>2</DURATION><CHANNEL>2</CHANNEL><FREQUENCY>2822400</FREQUENCY>"
            "</ID3TAG>\n");
}

TEST(Dsf2flac, RejectsNonDsdFile) {
  const TempDir folder;
  folder.write("empty.dsf", "");
  folder.write("header.dsf", "DSD ");
  folder.write("header.dff", "FRM8");
  folder.write("text.dsf", "no DSD at all");
  ASSERT_EQ(mkfifo(folder.path("pipe.dsf").c_str(), 0600), 0);
  for (const std::string& path :
       {folder.path("empty.dsf"), folder.path("header.dsf"), folder.path("header.dff"),
        folder.path("text.dsf"), folder.path("pipe.dsf"), folder.path("missing.dsf"),
        folder.folder(), media("tone.wav", "-f lavfi -i sine=d=1"),
        media("tone.aiff", "-f lavfi -i sine=d=1")}) {
    const RunResult result = dsf2flac({"-i", path, "-f"});
    EXPECT_EQ(result.status, 1) << path;
    EXPECT_EQ(result.out, "") << path;
    EXPECT_THAT(result.err, HasSubstr("dsf2flac: " + path + ": not a readable DSD file")) << path;
  }
}

TEST(Dsf2flac, SurvivesTruncatedFiles) {
  const TempDir folder;
  const std::string tag = id3v2Tag(kFrames);
  for (const std::string& whole :
       {dsfFile({.sampleRate = 8192, .seconds = 1, .tag = tag}),
        dffFile({.sampleRate = 8192, .seconds = 1, .tag = tag}, "Artist", "Title")}) {
    for (std::size_t length = 0; length < whole.size(); length += whole.size() / 15 + 1)
      EXPECT_LE(dsf2flac({"-i", folder.write("cut", whole.substr(0, length)), "-f"}).status, 1);
    for (std::size_t i = 0; i < 200 && i < whole.size(); i += 9) {
      std::string damaged = whole;
      damaged[i] = static_cast<char>(damaged[i] ^ 0xFF);
      const int status = dsf2flac({"-i", folder.write("damaged", damaged), "-f"}).status;
      EXPECT_TRUE(status == 0 || status == 1) << i;
    }
  }
}

TEST(Dsf2flac, RejectsOtherUsage) {
  const std::vector<std::vector<std::string>> rows = {
      {}, {"-f"}, {"-i"}, {"-i", "x.dsf"}, {"-i", "x.dsf", "-f", "more"}, {"-x"}};
  for (const auto& arguments : rows) {
    const RunResult result = dsf2flac(arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
  }
  EXPECT_EQ(dsf2flac({"--help"}).status, 0);
  EXPECT_EQ(run({"sh", "-c", "exec \"$0\" --help >/dev/full", KOLUM_DSF2FLAC}).status, 1);
}

TEST(Dsf2flac, WorksWithTheLibrary) {
  // The library inserts the working path into shell commands unescaped.
  const TempDir tools;
  std::filesystem::create_symlink(KOLUM_DSF2FLAC, tools.path("dsf2flac"));
  ASSERT_EQ(KoLUM_Init(tools.folder().c_str()), 0);
  const TempDir folder;
  folder.write("my 'best' song.dsf",
               dsfFile({.tag = id3v2Tag({{"TIT2", "Title"}, {"TDRC", "2015"}})}));
  songObject_st song = {};
  EXPECT_EQ(GetDsfMetadata(folder.folder().c_str(), "my 'best' song.dsf", &song), 0U);
  EXPECT_STREQ(song.title, "Title");
  EXPECT_EQ(song.year, 2015);
  EXPECT_EQ(song.duration, 2U);
  EXPECT_EQ(song.sampleRate, 2822400U);
  EXPECT_EQ(song.bitRate, 5644U);
}

dsf2flac::DsdFacts withTexts(const std::string& text) {
  return {.title = text,
          .artist = text,
          .album = text,
          .seconds = 1,
          .channels = 2,
          .frequency = 2822400};
}

std::string titleIn(const std::string& document) {
  return XMLNode::parseString(document, "ID3TAG").getChildNode("TITLE").getText();
}

TEST(Dsf2flacDocument, EscapesHostileTexts) {
  struct Row {
    const char* text;
    const char* read;
  };
  const Row rows[] = {
      {"</TITLE><DURATION>9</DURATION>", "</TITLE><DURATION>9</DURATION>"},
      {"a & b < c > d \" e '", "a & b < c > d \" e '"},
      {"&amp; &#0; &x;", "&amp; &#0; &x;"},
      {"]]><!-- <?x?> <![CDATA[", "]]><!-- <?x?> <![CDATA["},
      {"M\xC3\xBCnchen \xF0\x9F\x8E\xB5", "M\xC3\xBCnchen \xF0\x9F\x8E\xB5"},
      {"a\x01"
       "b\x1F\x08z",
       "a b  z"},
      {"line\nend\tand tab", "line end\tand tab"},
      {"x\xFF\xFE", "x  "},
      {"cut \xC3", "cut  "},
      {"\xC0\xAF overlong \xE0\x80\xAF", "   overlong    "},
      {"surrogate \xED\xA0\x80.", "surrogate    ."},
      {"beyond \xF4\x90\x80\x80.", "beyond     ."},
      {"none \xEF\xBF\xBF.", "none  ."},
  };
  for (const Row& row : rows) {
    const std::string document = documentOf(withTexts(row.text));
    EXPECT_EQ(titleIn(document), row.read) << document;
    EXPECT_THAT(document, HasSubstr("<DURATION>1</DURATION><CHANNEL>2</CHANNEL>"));
  }
}

TEST(Dsf2flacDocument, NeverExceedsItsReadersLimit) {
  for (const char c : {'&', '<', '>', '"', '\'', 'x', '\xFF'}) {
    dsf2flac::DsdFacts facts = withTexts(std::string(100'000, c));
    facts.year = facts.track = 99'999;
    facts.seconds = INT64_MAX;
    facts.frequency = INT64_MIN;
    facts.channels = INT32_MIN;
    EXPECT_LE(documentOf(facts).size(), dsf2flac::kLongestDocument) << c;
  }
}

TEST(Dsf2flacDocument, CutsTextsBetweenCharacters) {
  std::string text(254, 'x');
  const std::string kept = text;
  text += "\xC3\xBC";
  EXPECT_EQ(titleIn(documentOf(withTexts(text))), kept);
}

}  // namespace
}  // namespace kolum::test
