// The commands classify, extensions and ids.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kolum/filetype.h>
#include <kolum/identifiers.h>

#include "tool/kolum_run.h"

namespace kolum::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

json single(const Outcome& run) {
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.json().size(), 1U);
  return run.json().front();
}

TEST(Classify, PrintsKindRowAndMimeType) {
  const Outcome run =
      kolum({"classify", "Movie.MKV", "song.flac", "photo.JPG", "list.m3u", "notes.txt"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out,
            "Kind      Row  MIME type                 File\n"
            "video     17   video/x-matroska          Movie.MKV\n"
            "music     5    audio/x-flac              song.flac\n"
            "photo     3    image/jpeg                photo.JPG\n"
            "playlist  1    text/plain                list.m3u\n"
            "none      -    -                         notes.txt\n");
}

TEST(Classify, PrintsWhatTheExtensionImpliesAsJson) {
  EXPECT_EQ(single(kolum({"classify", "--json", "song.m4a"})),
            json::parse(R"({"file":"song.m4a","kind":{"id":1,"name":"music"},"row":8,
              "extension":".m4a","mimeType":"audio/x-m4a",
              "containerFormat":{"id":65544,"name":"FORMAT_MPEG4","brand":"MPEG4_M4A"},
              "audioCodec":{"id":86018,"name":"CODEC_ID_AAC"},"flag":0})"));
  EXPECT_EQ(single(kolum({"classify", "--json", "photo.png"})),
            json::parse(R"({"file":"photo.png","kind":{"id":3,"name":"photo"},"row":6,
              "extension":".png","mimeType":"image/png","pictureFormat":4})"));
  EXPECT_EQ(single(kolum({"classify", "--json", "notes"})),
            json::parse(R"({"file":"notes","kind":{"id":0,"name":"none"}})"));
}

// The library reports the row even of a rejected disc index.
TEST(Classify, KeepsTheRowOfRejectedDiscIndexes) {
  const auto lines = kolum({"classify", "--json", "VIDEO_TS.IFO", "other.ifo"}).json();
  EXPECT_EQ(lines[0]["kind"]["id"], 2);
  EXPECT_EQ(lines[0]["row"], 1);
  EXPECT_EQ(lines[1]["kind"]["id"], 0);
  EXPECT_EQ(lines[1]["row"], 1);
}

TEST(Classify, LimitsKinds) {
  const auto lines =
      kolum({"classify", "--json", "--kinds", "video,photo", "a.mkv", "a.mp3", "a.png"}).json();
  EXPECT_EQ(lines[0]["kind"]["name"], "video");
  EXPECT_EQ(lines[1]["kind"]["name"], "none");
  EXPECT_EQ(lines[2]["kind"]["name"], "photo");
}

TEST(Classify, ExcludesRowsByMask) {
  const auto lines = kolum({"classify", "--json", "--mask", "video=0x20", "--mask", "photo=32",
                            "a.mp4", "a.mkv", "a.png"})
                         .json();
  EXPECT_EQ(lines[0]["kind"]["name"], "none");
  EXPECT_EQ(lines[1]["kind"]["name"], "video");
  EXPECT_EQ(lines[2]["kind"]["name"], "none");
}

TEST(Classify, KeepsBuiltInExclusions) {
  const auto line = single(kolum({"classify", "--json", "--mask", "music=0", "a.dts"}));
  EXPECT_EQ(line["kind"]["name"], "none");
}

TEST(Classify, ReturnsTheTagForVideos) {
  const auto lines = kolum({"classify", "--json", "--tag", "3", "a.avi", "a.avi"}).json();
  EXPECT_EQ(lines[0]["tag"], 3);
  EXPECT_FALSE(kolum({"classify", "--json", "--tag", "3", "--kinds", "music", "a.mp3"})
                   .json()[0]
                   .contains("tag"));
}

TEST(Extensions, ListEveryRowOfEveryTable) {
  const auto rows = kolum({"extensions", "--json"}).json();
  const struct {
    const char* kind;
    const MediaFileInfo* table;
  } tables[] = {{"video", g_VideoFileInfo},
                {"music", g_SongFileInfo},
                {"photo", g_PictureFileInfo},
                {"playlist", g_PlaylistFileInfo}};
  std::size_t at = 0;
  for (const auto& [kind, table] : tables) {
    for (int row = 0; table[row].extension != nullptr; ++row, ++at) {
      ASSERT_LT(at, rows.size());
      EXPECT_EQ(rows[at]["kind"]["name"], kind);
      EXPECT_EQ(rows[at]["row"], row + 1);
      EXPECT_EQ(rows[at]["extension"], table[row].extension);
      EXPECT_EQ(rows[at]["mimeType"], table[row].mimeType);
    }
  }
  EXPECT_EQ(at, rows.size());
}

TEST(Extensions, LimitTablesByKind) {
  const Outcome run = kolum({"extensions", "--kinds", "playlist"});
  EXPECT_EQ(run.out,
            "Kind      Row  Ext.   MIME type                 Implies\n"
            "playlist  1    .m3u   text/plain\n"
            "playlist  2    .pls   text/plain\n"
            "playlist  3    .wpl   application/vnd.ms-wpl\n"
            "playlist  4    .asx   application/asx\n");
}

TEST(Ids, ListWholeTables) {
  const std::pair<const char*, std::size_t> tables[] = {
      {"formats", 26}, {"brands", 11}, {"codecs", 334}, {"profiles", 50}, {"exceptions", 4}};
  for (const auto& [table, rows] : tables) {
    const Outcome run = kolum({"ids", table, "--json"});
    EXPECT_EQ(run.status, 0) << table;
    EXPECT_EQ(run.json().size(), rows) << table;
  }
}

TEST(Ids, ConvertEveryCodecName) {
  for (const auto& line : kolum({"ids", "codecs", "--json"}).json()) {
    unsigned id = 0;
    EXPECT_EQ(CodecNameToID(line["name"].get<std::string>().c_str(), &id), 0) << line;
    EXPECT_EQ(line["id"], id) << line;
  }
}

TEST(Ids, LookUpNamesAndNumbers) {
  const struct {
    std::vector<std::string> arguments;
    const char* line;
  } rows[] = {
      {{"codecs", "H264"}, R"({"id":28,"name":"CODEC_ID_H264"})"},
      {{"codecs", "CODEC_ID_H265"}, R"({"id":164,"name":"CODEC_ID_H265"})"},
      {{"codecs", "164"}, R"({"id":164,"name":"CODEC_ID_HEVC"})"},
      {{"codecs", "0x15002"}, R"({"id":86018,"name":"CODEC_ID_AAC"})"},
      {{"codecs", "8BPS"}, R"({"id":49,"name":"CODEC_ID_8BPS"})"},
      {{"formats", "MPEG4/MOV"},
       R"({"id":262152,"name":"FORMAT_MPEG4/MPEG4_MOV","extension":"mp4"})"},
      {{"formats", "0x10008"}, R"({"id":65544,"name":"FORMAT_MPEG4/MPEG4_M4A","extension":"mp4"})"},
      {{"formats", "FORMAT_MKV"}, R"({"id":12,"name":"FORMAT_MKV","extension":"mkv"})"},
      {{"brands", "4"}, R"({"id":4,"name":"MPEG4_MOV"})"},
      {{"profiles", "H264_HIGH"}, R"({"id":260098,"name":"PROFILE_H264_HIGH"})"},
      {{"profiles", "2", "--codec", "H264"},
       R"({"id":2,"name":"PROFILE_H264_CONSTRAINED_BASELINE"})"},
      {{"profiles", "2", "--codec", "MPEG4"}, R"({"id":2,"name":"PROFILE_MPEG4_SIMPLE"})"},
      {{"profiles", "-99"}, R"({"id":-99,"name":"PROFILE_UNKNOWN"})"},
      {{"exceptions", "0x20001"}, R"({"id":131073,"name":"PLAY_EXCEPTION_H264_AVC1"})"},
      {{"codecs", "--ffmpeg", "174"}, R"({"ffmpeg":174,"id":164,"name":"CODEC_ID_HEVC"})"},
      {{"profiles", "--ffmpeg", "100", "--codec", "28"},
       R"({"ffmpeg":100,"id":260098,"name":"PROFILE_H264_HIGH"})"},
  };
  for (const auto& row : rows) {
    std::vector<std::string> arguments = {"ids", "--json"};
    arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
    EXPECT_EQ(single(kolum(arguments)), json::parse(row.line)) << row.line;
  }
}

TEST(Ids, ReportEachUnknownValue) {
  const std::vector<std::vector<std::string>> rows = {
      {"ids", "codecs", "h264"},
      {"ids", "codecs", "99999999999999999999"},
      {"ids", "codecs", "0x"},
      {"ids", "codecs", ""},
      {"ids", "formats", "26"},
      {"ids", "formats", "0x100000001"},
      {"ids", "formats", "-65527"},
      {"ids", "profiles", "--codec", "H264", "0x100000001"},
      {"ids", "formats", "MPEG4/NOTHING"},
      {"ids", "brands", "12"},
      {"ids", "codecs", "--ffmpeg", "70000"},
      {"ids", "codecs", "--ffmpeg", "x"},
      {"ids", "exceptions", "1"},
  };
  for (const auto& arguments : rows) {
    std::vector<std::string> withGood = arguments;
    withGood.push_back("3");
    const Outcome run = kolum(withGood);
    EXPECT_EQ(run.status, 1) << testing::PrintToString(arguments);
    EXPECT_THAT(run.err,
                testing::StartsWith(
                    "kolum: " + (arguments.back().empty() ? "\"\"" : arguments.back()) + ": "));
  }
}

TEST(Ids, ListEveryFfmpegConversion) {
  const auto rows = kolum({"ids", "codecs", "--ffmpeg", "--json"}).json();
  EXPECT_EQ(rows.size(), 329U);
  EXPECT_EQ(rows.back()["name"], "CODEC_ID_FFMETADATA");
  for (const auto& row : rows) EXPECT_EQ(ffmpegCodecIdConvert(row["ffmpeg"]), row["id"]) << row;
}

}  // namespace
}  // namespace kolum::test
