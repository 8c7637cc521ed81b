// The two key-frame searches on real files, compared with ffprobe's packets.
#include <gtest/gtest.h>
#include <kolum/mediainfo.h>
#include <sys/stat.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "base/shell.h"
#include "read/ffmpeg/input.h"
#include "read/ffmpeg/key_frames.h"
#include "support/child_process.h"
#include "support/descriptors.h"
#include "support/media_factory.h"
#include "support/mp4_builder.h"
#include "support/temp_dir.h"

using namespace kolum::test;
using kolum::shellWord;
using kolum::ffmpeg::timestampAfter;
using kolum::ffmpeg::timestampAfter32;

namespace {

constexpr double kUntouched = -4711.5;
constexpr double kTolerance = 1e-9;

// The result of GetMediaInfo, which is SECONDS itself if it finds none.
double infoSearch(const std::string& path, std::int64_t seconds) {
  MediaInfo* info = nullptr;
  double time = kUntouched;
  EXPECT_EQ(GetMediaInfo(path.c_str(), &info, seconds, &time), 0U) << path;
  Free_MediaInfo(info);
  return time;
}

struct Found {
  unsigned result = 9;
  double time = kUntouched;
  std::string messages;  // of the library, without line numbers
};

// The library's lines on standard error, with "[MediaInfo:123]" shortened to "[MediaInfo]".
std::string ownMessages(const std::string& text) {
  std::string own;
  std::size_t at = 0;
  while ((at = text.find("[MediaInfo:", at)) != std::string::npos) {
    const std::size_t close = text.find(']', at);
    const std::size_t end = text.find_first_not_of('\n', text.find('\n', close));
    own += "[MediaInfo]" + text.substr(close + 1, end - close - 1);
    at = end;
  }
  return own;
}

Found search(const std::string& path, int seconds) {
  Found found;
  testing::internal::CaptureStderr();
  found.result = getVideoKeyFrameTime(path.c_str(), seconds, &found.time);
  found.messages = ownMessages(testing::internal::GetCapturedStderr());
  return found;
}

void expectFound(const Found& found, double time) {
  EXPECT_EQ(found.result, 0U);
  EXPECT_NEAR(found.time, time, kTolerance);
  EXPECT_EQ(found.messages, "");
}

void expectNotFound(const Found& found, const std::string& messages) {
  EXPECT_EQ(found.result, 1U);
  EXPECT_EQ(found.time, kUntouched);
  EXPECT_EQ(found.messages, messages);
}

constexpr char kSeekFailed[] = "[MediaInfo]: av_seek_frame failed\n";
constexpr char kReadFailed[] = "[MediaInfo]: av_read_frame failed\n\n";
constexpr char kNoStartSeek[] =
    "[MediaInfo]: seek error, can't find valid PTS.\n"
    "[MediaInfo]:Can't find valid PTS, assuming it is 0.\n";
constexpr char kNoStartRead[] =
    "[MediaInfo]: read error or EOF, abort search PTS\n"
    "[MediaInfo]:Can't find valid PTS, assuming it is 0.\n";

// A key frame as ffprobe lists it, in seconds from the stream's first time stamp.
struct KeyFrame {
  double pts;
  double dts;
};

std::vector<KeyFrame> keyFrames(const std::string& path) {
  const auto probed =
      nlohmann::json::parse(mustRun({"ffprobe", "-v", "quiet", "-of", "json", "-select_streams",
                                     "v:0", "-show_packets", "-show_streams", path}));
  const double start = std::stod(probed["streams"][0]["start_time"].get<std::string>());
  const auto time = [start](const nlohmann::json& packet, const char* key) {
    return std::stod(packet.value(key, "0")) - start;
  };
  std::vector<KeyFrame> frames;
  for (const auto& packet : probed["packets"]) {
    if (packet["flags"].get<std::string>().front() == 'K' && packet.contains("pts_time"))
      frames.push_back({time(packet, "pts_time"), time(packet, "dts_time")});
  }
  return frames;
}

const std::string kTwentySeconds =
    "-f lavfi -i testsrc=s=64x48:r=25:d=20 -f lavfi -i sine=d=20 -pix_fmt yuv420p -g 50 ";
const std::string kX264 = "-c:v libx264 -sc_threshold 0 ";
const std::string kNoSceneCut = " -sc_threshold 1000000000 ";

std::string twoSecondGroups(const std::string& extension) {
  return media("groups." + extension, kTwentySeconds + kX264 + "-c:a aac");
}

// How FFmpeg seeks in a container: which time stamp of a key frame must be at or after the target,
// and what it finds beyond the last key frame.
enum class SeekBy { kPts, kDts };
enum class Beyond { kNothing, kLastKeyFrame };

struct SearchRow {
  const char* name;
  std::string codecs;
  SeekBy by;
  Beyond beyond;
  // Some demuxers find their streams only in packets; the search on its own does not wait for that.
  bool knowsStreamsAtOpen = true;
};

const std::vector<SearchRow>& searchRows() {
  static const std::vector<SearchRow> rows = {
      {"groups.mp4", kX264 + "-c:a aac", SeekBy::kPts, Beyond::kNothing},
      {"groups.mov", kX264 + "-c:a aac", SeekBy::kPts, Beyond::kNothing},
      {"groups.mkv", kX264 + "-c:a aac", SeekBy::kPts, Beyond::kNothing},
      {"groups.webm", "-c:v libvpx -c:a libvorbis", SeekBy::kPts, Beyond::kNothing},
      {"groups.avi", kNoSceneCut + "-c:v mpeg4 -c:a mp3", SeekBy::kDts, Beyond::kNothing},
      {"groups.flv", kX264 + "-c:a aac", SeekBy::kDts, Beyond::kNothing, false},
      {"groups.mpg", kNoSceneCut + "-c:v mpeg1video -c:a mp2", SeekBy::kDts, Beyond::kNothing,
       false},
      {"groups.ts", kX264 + "-c:a aac", SeekBy::kDts, Beyond::kNothing},
      {"groups.asf", kNoSceneCut + "-c:v wmv2 -c:a wmav2", SeekBy::kPts, Beyond::kLastKeyFrame},
      {"groups.rm", kNoSceneCut + "-c:v rv20 -s 176x144 -c:a ac3", SeekBy::kPts,
       Beyond::kLastKeyFrame},
      {"groups.ogv", "-c:v libtheora -c:a libvorbis", SeekBy::kPts, Beyond::kLastKeyFrame},
  };
  return rows;
}

std::optional<double> expectedTime(const SearchRow& row, const std::vector<KeyFrame>& keys,
                                   double seconds) {
  for (const KeyFrame& key : keys)
    if ((row.by == SeekBy::kPts ? key.pts : key.dts) > seconds - 1e-6) return key.pts;
  if (row.beyond == Beyond::kLastKeyFrame) return keys.back().pts;
  return std::nullopt;
}

TEST(KeyFrameSearch, AgreesWithFfprobesPacketsInEveryContainer) {
  for (const SearchRow& row : searchRows()) {
    const std::string path = media(row.name, kTwentySeconds + row.codecs);
    const std::vector<KeyFrame> keys = keyFrames(path);
    ASSERT_GE(keys.size(), 9U) << row.name;
    for (const int seconds : {1, 2, 3, 9, 18, 19, 40}) {
      SCOPED_TRACE(std::string(row.name) + " at " + std::to_string(seconds));
      const auto expected = expectedTime(row, keys, seconds);
      EXPECT_NEAR(infoSearch(path, seconds), expected.value_or(seconds), 2e-6);
      const Found found = search(path, seconds);
      if (expected && row.knowsStreamsAtOpen) {
        EXPECT_EQ(found.result, 0U);
        EXPECT_NEAR(found.time, *expected, 2e-6);
      } else {
        EXPECT_EQ(found.result, 1U);
        EXPECT_EQ(found.time, kUntouched);
        EXPECT_EQ(found.messages.empty(), !row.knowsStreamsAtOpen);
      }
    }
  }
}

TEST(KeyFrameSearch, FindsTheFirstKeyFrameForSecondZero) {
  expectFound(search(twoSecondGroups("mp4"), 0), 0);
}

TEST(KeyFrameSearch, CountsFromTheStreamsStart) {
  for (const char* extension : {"mkv", "mp4", "ts"}) {
    SCOPED_TRACE(extension);
    const std::string path =
        media(std::string("late.") + extension,
              kTwentySeconds + kNoSceneCut + "-c:v mpeg4 -bf 0 -an -output_ts_offset 100");
    ASSERT_GE(std::stod(ffprobe(path)["streams"][0]["start_time"].get<std::string>()), 100);
    EXPECT_NEAR(infoSearch(path, 3), 4, kTolerance);
    expectFound(search(path, 3), 4);
  }
}

TEST(KeyFrameSearch, ReportsFailedSeekBeyondTheLastKeyFrame) {
  expectNotFound(search(twoSecondGroups("mp4"), 30), kSeekFailed);
}

TEST(KeyFrameSearch, ReportsThatNoKeyFrameFollows) {
  expectNotFound(search(twoSecondGroups("ts"), 19), kReadFailed);
}

// A copy of a transport stream without the time stamps of its first COUNT video packets.
std::string withoutEarlyTimestamps(const std::string& path, int count) {
  return made("late-pts.ts", std::to_string(count) + " of " + path, [&](const std::string& out) {
    std::ifstream in(path, std::ios::binary);
    std::string file{std::istreambuf_iterator<char>(in), {}};
    // A video packet's header: start code with stream id, length, then two bytes of flags.
    std::size_t at = 0;
    for (int i = 0; i < count; ++i) {
      at = file.find(std::string("\0\0\1\xE0", 4), at + 1);
      ASSERT_NE(at, std::string::npos);
      file[at + 7] = static_cast<char>(file[at + 7] & 0x3F);
    }
    std::ofstream(out, std::ios::binary) << file;
  });
}

TEST(KeyFrameSearch, StartsAtTheFirstTimestampOfATransportStream) {
  const std::string whole =
      media("intra.ts",
            "-f lavfi -i testsrc=s=64x48:r=25:d=8 -pix_fmt yuv420p -c:v mpeg2video "
            "-bf 0 -g 25 -sc_threshold 1000000000");
  const std::string path = withoutEarlyTimestamps(whole, 10);
  // The stream now starts at its eleventh packet, 0.4 s later, so the key frame at 3 s is at 2.6 s.
  expectFound(search(path, 2), 2.6);
  EXPECT_NEAR(infoSearch(path, 2), 2.6, kTolerance);
}

// The first time stamp comes after what the stream information reads.
TEST(KeyFrameSearch, ReadsOnToTheFirstTimestampForTheRecord) {
  const std::string whole =
      media("intra-long.ts",
            "-f lavfi -i testsrc=s=64x48:r=25:d=40 -pix_fmt yuv420p -c:v mpeg2video "
            "-bf 0 -g 25 -sc_threshold 1000000000");
  const std::string path = withoutEarlyTimestamps(whole, 510);
  const auto container = kolum::ffmpeg::readContainer(path, kolum::ffmpeg::Depth::kStreams);
  ASSERT_TRUE(container.has_value());
  EXPECT_FALSE(container->streams[0].startTime.has_value());
  EXPECT_NEAR(infoSearch(path, 2), 2.6, kTolerance);
}

TEST(KeyFrameSearch, SkipsKeyFramesWithoutTimestamp) {
  // With reordered pictures, FFmpeg does not report when those of an AVI file are shown.
  const std::string path =
      media("reordered.avi",
            "-f lavfi -i testsrc=s=64x48:r=25:d=4 -pix_fmt yuv420p -c:v libx264 -bf 2 -g 25");
  expectNotFound(search(path, 1), kReadFailed);
  EXPECT_EQ(infoSearch(path, 1), 1);
}

TEST(KeyFrameSearch, AcceptsUrl) {
  const std::string path = twoSecondGroups("ts");
  expectFound(search("file:" + path, 3), search(path, 3).time);
  expectFound(search("concat:" + path, 3), search(path, 3).time);
}

TEST(KeyFrameSearch, StartsAtZeroWithoutTimestamps) {
  const std::string raw =
      media("raw.h264",
            "-f lavfi -i testsrc=s=64x48:r=25:d=4 -pix_fmt yuv420p -c:v libx264 "
            "-g 50");
  expectNotFound(search(raw, 1), std::string(kNoStartSeek) + kSeekFailed);
  EXPECT_EQ(infoSearch(raw, 1), 1);

  const std::string stream =
      media("intra.ts",
            "-f lavfi -i testsrc=s=64x48:r=25:d=8 -pix_fmt yuv420p -c:v mpeg2video "
            "-bf 0 -g 25 -sc_threshold 1000000000");
  const Found found = search(withoutEarlyTimestamps(stream, 200), 1);
  EXPECT_EQ(found.result, 1U);
  EXPECT_EQ(found.messages.substr(0, sizeof kNoStartRead - 1), kNoStartRead);
}

TEST(KeyFrameSearch, FindsNothingInAttachedPicture) {
  const std::string picture = media("picture.jpg", "-f lavfi -i color=red:s=32x24:d=1 -frames:v 1");
  for (const char* codec : {"mp3", "flac"}) {
    const std::string path =
        media(std::string("cover.") + codec, "-f lavfi -i sine=d=5 -i " + shellWord(picture) +
                                                 " -map 0 -map 1 -c:a " + codec +
                                                 " -c:v copy -disposition:v attached_pic");
    EXPECT_EQ(infoSearch(path, 3), 3) << codec;
    EXPECT_EQ(search(path, 3).result, 1U) << codec;
  }
}

// The picture of an Ogg song: a FLAC picture block as text in a tag.
std::string oggPictureTag() {
  const std::string picture =
      mustRun({"cat", media("picture.jpg", "-f lavfi -i color=red:s=32x24:d=1 -frames:v 1")});
  const std::string type = "image/jpeg";
  const std::string block = bigEndian(3, 4) + bigEndian(type.size(), 4) + type + bigEndian(0, 4) +
                            bigEndian(32, 4) + bigEndian(24, 4) + bigEndian(24, 4) +
                            bigEndian(0, 4) + bigEndian(picture.size(), 4) + picture;
  const TempDir folder;
  return "METADATA_BLOCK_PICTURE=" + mustRun({"base64", "--wrap=0", folder.write("block", block)});
}

TEST(KeyFrameSearch, SurvivesOggSongWithPicture) {
  const std::string tag = oggPictureTag();
  for (const char* codec : {"libvorbis", "flac", "libopus"}) {
    SCOPED_TRACE(codec);
    const std::string path =
        media(std::string("cover-") + codec + ".ogg",
              std::string("-f lavfi -i sine=d=5 -c:a ") + codec + " -metadata '" + tag + "'");
    ASSERT_EQ(ffprobe(path)["streams"].size(), 2U);
    for (const int seconds : {1, 3, 100}) EXPECT_EQ(infoSearch(path, seconds), seconds);
    for (const int seconds : {0, 3, 100}) EXPECT_EQ(search(path, seconds).result, 1U);
  }
}

// A transport stream with 25 pictures per second and a key frame every GROUP pictures. Seeking in
// it lands on any picture, so the search has to read on to the next key frame.
std::string longGroups(const std::string& name, int group, int pictures, const std::string& more) {
  return media(name, "-f lavfi -i color=gray:s=16x16:r=25 " + more + " -frames:v " +
                         std::to_string(pictures) +
                         " -pix_fmt yuv420p -c:v libx264 -preset ultrafast -bf 0 -sc_threshold 0 "
                         "-keyint_min 1 -g " +
                         std::to_string(group));
}

TEST(KeyFrameSearch, GivesUpAfter3600PacketsWithoutKeyFrame) {
  const std::string path = longGroups("long.ts", 4000, 4100, "");
  ASSERT_EQ(keyFrames(path).size(), 2U);
  EXPECT_NEAR(infoSearch(path, 20), 160, kTolerance);  // 3500 packets on
  EXPECT_EQ(infoSearch(path, 2), 2);                   // 3950 packets on
  expectFound(search(path, 20), 160);
  expectNotFound(search(path, 2), "");
}

TEST(KeyFrameSearch, ExaminesThe3600thPacketAndNoMore) {
  // The second second begins with picture 50, the first one that is read.
  const std::string last = longGroups("last.ts", 50 + 3599, 3700, "");
  expectFound(search(last, 2), (50 + 3599) / 25.0);
  EXPECT_NEAR(infoSearch(last, 2), (50 + 3599) / 25.0, kTolerance);
  const std::string beyond = longGroups("beyond.ts", 50 + 3600, 3700, "");
  expectNotFound(search(beyond, 2), "");
  EXPECT_EQ(infoSearch(beyond, 2), 2);
}

TEST(KeyFrameSearch, CountsOtherStreamsPacketsForTheRecordOnly) {
  const std::string path =
      longGroups("sound.ts", 2000, 2100, "-f lavfi -i sine=r=48000 -c:a mp2 -shortest -t 84");
  ASSERT_EQ(keyFrames(path).size(), 2U);
  // 1750 pictures and, before the second key frame, more than 1850 audio packets.
  EXPECT_EQ(infoSearch(path, 10), 10);
  expectFound(search(path, 10), 80);
}

TEST(KeyFrameSearch, SharesOneLimitBetweenVideoStreams) {
  const std::string first = longGroups("long.ts", 4000, 4100, "");
  const std::string second =
      media("short.ts",
            "-f lavfi -i color=gray:s=16x16:r=25:d=164 -pix_fmt yuv420p -c:v mpeg2video "
            "-g 25 -bf 0");
  const std::string both = media("two.ts", "-i " + shellWord(first) + " -i " + shellWord(second) +
                                               " -map 0:v -map 1:v -c copy");
  ASSERT_EQ(ffprobe(both)["streams"].size(), 2U);
  // The second stream has a key frame every second, but the limit is used up.
  expectNotFound(search(both, 2), "");
  EXPECT_EQ(infoSearch(both, 2), 2);
}

TEST(KeyFrameSearch, OpensLaterVideoStreamsAfterLimitIsUsedUp) {
  const std::string first = longGroups("long.ts", 4000, 4100, "");
  const std::string undecodable =
      replaced(media("fmp4.avi", "-f lavfi -i testsrc=s=64x48:r=25:d=2 -c:v mpeg4 -vtag FMP4"),
               "FMP4", "AVS2");
  const std::string both =
      media("undecodable.ts", "-i " + shellWord(first) + " -i " + shellWord(undecodable) +
                                  " -map 0:v -map 1:v -c copy -bsf:v:1 setts=ts=N*3600");
  expectNotFound(search(both, 2), "[MediaInfo]: Decoder not found, skipping...\n");
}

TEST(KeyFrameSearch, SearchesTheFirstVideoStreamOnly) {
  const std::string path =
      media("two.mkv",
            "-f lavfi -i testsrc=s=64x48:r=25:d=9 -f lavfi -i testsrc=s=32x24:r=25:d=9 "
            "-map 0 -map 1 -pix_fmt yuv420p -c:v mpeg4 -bf 0 -sc_threshold 1000000000 "
            "-g:v:0 100 -g:v:1 25");
  EXPECT_NEAR(infoSearch(path, 1), 4, kTolerance);
  expectFound(search(path, 1), 4);
}

TEST(KeyFrameSearch, FailsForUndecodableStream) {
  const std::string path =
      replaced(media("fmp4.avi", "-f lavfi -i testsrc=s=64x48:r=25:d=2 -c:v mpeg4 -vtag FMP4"),
               "FMP4", "AVS2");
  expectNotFound(search(path, 1), "[MediaInfo]: Decoder not found, skipping...\n");
  EXPECT_EQ(infoSearch(path, 1), 1);
}

TEST(KeyFrameSearch, FailsIfTheDecoderRefusesTheStream) {
  TempDir folder;
  std::string file =
      contentOf(media("raw.avi", "-f lavfi -i testsrc=s=64x48:r=25:d=2 -c:v huffyuv"));
  // The picture format chunk: 8 bytes of header, then size, width, height, planes, bits per pixel
  // and the codec, followed by the codec's set-up. Without that the decoder refuses.
  const std::size_t format = file.find("strf");
  ASSERT_NE(format, std::string::npos);
  file[format + 8 + 14] = 7;
  const std::string path = folder.write("odd.avi", file);
  expectNotFound(search(path, 1), "[MediaInfo]: Decoder failed to open, skipping...\n");
  EXPECT_EQ(infoSearch(path, 1), 1);
}

TEST(KeyFrameSearch, RejectsBadArguments) {
  double time = kUntouched;
  const std::string path = twoSecondGroups("mp4");
  testing::internal::CaptureStderr();
  EXPECT_EQ(getVideoKeyFrameTime(nullptr, 1, &time), 1U);
  EXPECT_EQ(getVideoKeyFrameTime(path.c_str(), 1, nullptr), 1U);
  EXPECT_EQ(getVideoKeyFrameTime(path.c_str(), -1, &time), 1U);
  const std::string line = "[MediaInfo]: input parameter error.\n";
  EXPECT_EQ(ownMessages(testing::internal::GetCapturedStderr()), line + line + line);
  EXPECT_EQ(time, kUntouched);
}

TEST(KeyFrameSearch, ReportsTheUrlThatItCannotOpen) {
  TempDir folder;
  for (const std::string& path : {folder.path("missing.mp4"), folder.write("text.mp4", "words"),
                                  std::string("nosuch:thing"), std::string()}) {
    expectNotFound(search(path, 1), "[MediaInfo]: avformat_open_input " + path + " fail.\n");
  }
}

TEST(KeyFrameSearch, IsSilentAboutFilesWithoutStreamsOrVideo) {
  TempDir folder;
  expectNotFound(search(folder.write("none.ffmeta", ";FFMETADATA1\ntitle=none\n"), 1), "");
  expectNotFound(search(media("sound.flac", "-f lavfi -i sine=d=1"), 1), "");
}

TEST(KeyFrameSearch, DoesNotWaitForPipes) {
  TempDir folder;
  const std::string pipe = folder.path("pipe.mkv");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  withinSeconds(20, [&] { EXPECT_EQ(search(pipe, 1).result, 1U); });
}

TEST(KeyFrameSearch, WrapsLongTimesTo32BitsExceptForTheRecord) {
  // 47722 s are 12704 units of 1/90000 s more than 2^32: 0.14 s.
  const std::string path = twoSecondGroups("ts");
  EXPECT_EQ(infoSearch(path, 47722), 47722);
  expectFound(search(path, 47722), 2);
}

TEST(KeyFrameSearch, LeavesNoDescriptorOpen) {
  const std::string ts = twoSecondGroups("ts");
  const std::string mp4 = twoSecondGroups("mp4");
  infoSearch(mp4, 3);
  const ExpectNoDescriptorLeak leaks;
  for (const std::string& path : {ts, mp4}) {
    for (const int seconds : {3, 40}) {
      infoSearch(path, seconds);
      search(path, seconds);
    }
  }
}

// An MP4 file of SECONDS pictures, one per second and a megabyte each, with every tenth a key
// frame; the picture data is a hole.
std::string sparseMovie(const TempDir& folder, std::uint32_t seconds) {
  constexpr std::uint32_t kPictureSize = 1 << 20;
  const auto u32 = [](std::uint64_t value) { return bigEndian(value, 4); };
  const auto u16 = [](std::uint64_t value) { return bigEndian(value, 2); };
  const std::string zero4 = u32(0);
  std::string keys;
  for (std::uint32_t i = 1; i <= seconds; i += 10) keys += u32(i);
  const std::string entry =
      box("jpeg", std::string(6, '\0') + u16(1) + std::string(16, '\0') + u16(64) + u16(48) +
                      u32(0x480000) + u32(0x480000) + zero4 + u16(1) + std::string(32, '\0') +
                      u16(24) + u16(0xFFFF));
  std::string identity;
  for (const std::uint64_t value : {0x10000, 0, 0, 0, 0x10000, 0, 0, 0, 0x40000000})
    identity += u32(value);
  const auto movie = [&](std::uint64_t dataBegin) {
    const std::string table = box("stsd", zero4 + u32(1) + entry) +
                              box("stts", zero4 + u32(1) + u32(seconds) + u32(1)) +
                              box("stss", zero4 + u32((seconds + 9) / 10) + keys) +
                              box("stsc", zero4 + u32(1) + u32(1) + u32(seconds) + u32(1)) +
                              box("stsz", zero4 + u32(kPictureSize) + u32(seconds)) +
                              box("co64", zero4 + u32(1) + bigEndian(dataBegin, 8));
    const std::string media =
        box("mdhd", zero4 + zero4 + zero4 + u32(1) + u32(seconds) + zero4) +
        box("hdlr", zero4 + zero4 + "vide" + std::string(12, '\0') + '\0') +
        box("minf", box("vmhd", u32(1) + std::string(8, '\0')) +
                        box("dinf", box("dref", zero4 + u32(1) + box("url ", u32(1)))) +
                        box("stbl", table));
    const std::string track =
        box("tkhd", u32(7) + zero4 + zero4 + u32(1) + zero4 + u32(seconds) + std::string(16, '\0') +
                        identity + u32(64 << 16) + u32(48 << 16)) +
        box("mdia", media);
    return box("ftyp", "isom" + zero4 + "isom") +
           box("moov", box("mvhd", zero4 + zero4 + zero4 + u32(1) + u32(seconds) + u32(0x10000) +
                                       u16(0x100) + std::string(10, '\0') + identity +
                                       std::string(24, '\0') + u32(2)) +
                           box("trak", track));
  };
  const std::uint64_t dataSize = std::uint64_t{seconds} * kPictureSize;
  const std::uint64_t dataBegin = movie(0).size() + 16;
  const std::string path =
      folder.write("sparse.mp4", movie(dataBegin) + u32(1) + "mdat" + bigEndian(dataSize + 16, 8));
  std::filesystem::resize_file(path, dataBegin + dataSize);
  return path;
}

// The number of bytes that this process has read so far.
std::uint64_t bytesRead() {
  std::ifstream io("/proc/self/io");
  std::string key;
  std::uint64_t value = 0;
  io >> key >> value;
  EXPECT_EQ(key, "rchar:");
  return value;
}

TEST(KeyFrameSearch, SeeksInLongFileWithoutReadingAllOfIt) {
  constexpr std::uint32_t kTenHours = 36000;
  constexpr std::uint64_t kMegabyte = 1 << 20;
  TempDir folder;
  std::string path;
  try {
    path = sparseMovie(folder, kTenHours);
  } catch (const std::filesystem::filesystem_error& error) {
    GTEST_SKIP() << "no sparse file of 36 GB here: " << error.what();
  }
  ASSERT_EQ(std::stod(ffprobe(path)["format"]["duration"].get<std::string>()), kTenHours);
  std::uint64_t before = bytesRead();
  EXPECT_NEAR(infoSearch(path, 35001), 35010, kTolerance);
  EXPECT_LT(bytesRead() - before, 64 * kMegabyte);
  before = bytesRead();
  expectFound(search(path, 35001), 35010);
  EXPECT_LT(bytesRead() - before, 8 * kMegabyte);
}

// Like a preallocated download in progress.
TEST(KeyFrameSearch, DoesNotReadThroughUnwrittenParts) {
  constexpr std::uint64_t kMegabyte = 1 << 20;
  const TempDir folder;
  for (const char* extension : {"avi", "flv", "mkv", "mp4", "mpg", "ts"}) {
    SCOPED_TRACE(extension);
    const std::string name = std::string("begun.") + extension;
    const std::string written =
        media(name, "-f lavfi -i testsrc=s=64x48:r=25:d=3 -pix_fmt yuv420p -g 12");
    const std::string path = folder.path(name);
    std::filesystem::copy_file(written, path);
    try {
      std::filesystem::resize_file(path, std::uintmax_t{10} << 30);
    } catch (const std::filesystem::filesystem_error& error) {
      GTEST_SKIP() << "no sparse file of 10 GB here: " << error.what();
    }
    for (const int seconds : {1, 3}) {
      const std::uint64_t before = bytesRead();
      EXPECT_EQ(infoSearch(path, seconds), infoSearch(written, seconds));
      const Found expected = search(written, seconds);
      const Found found = search(path, seconds);
      EXPECT_EQ(found.result, expected.result);
      EXPECT_EQ(found.time, expected.time);
      EXPECT_EQ(found.messages, expected.messages);
      EXPECT_LT(bytesRead() - before, 600 * kMegabyte);
    }
  }
}

TEST(TimestampAfter, MultipliesIn64BitsAndCutsFractions) {
  struct Row {
    std::int64_t start;
    std::int64_t seconds;
    kolum::media::Rational timeBase;
    std::int64_t expected;
  };
  const Row rows[] = {
      {0, 0, {1, 90000}, 0},
      {126000, 10, {1, 90000}, 1026000},
      {0, 47722, {1, 90000}, 4294980000},
      {-5, 7, {1001, 30000}, 204},  // 209.79
      {0, -7, {1001, 30000}, -209},
      {0, INT64_MAX, {1, 2}, -2},  // wraps
      {INT64_MAX, 1, {1, 1}, INT64_MIN},
      {9, 5, {0, 0}, 9},
      {9, 5, {0, 1}, 9},
      {9, 5, {-1, 1}, 9},
  };
  for (const Row& row : rows)
    EXPECT_EQ(timestampAfter(row.start, row.seconds, row.timeBase), row.expected)
        << row.start << " " << row.seconds << " " << row.timeBase.num << "/" << row.timeBase.den;
}

TEST(TimestampAfter32, WrapsProductAndQuotientTo32Bits) {
  struct Row {
    std::int64_t start;
    std::int32_t seconds;
    kolum::media::Rational timeBase;
    std::int64_t expected;
  };
  const Row rows[] = {
      {126000, 10, {1, 90000}, 1026000},
      {0, 23860, {1, 90000}, 2147400000},
      {0, 23861, {1, 90000}, -2147477296},
      {100, 47722, {1, 90000}, 12804},
      {INT64_C(1) << 40, 1, {1, 90000}, (INT64_C(1) << 40) + 90000},  // the sum does not
      {0, INT32_MAX, {1, 1000000}, -1000000},
      {0, 7, {1001, 30000}, 209},
      {9, 5, {0, 0}, 9},
  };
  for (const Row& row : rows)
    EXPECT_EQ(timestampAfter32(row.start, row.seconds, row.timeBase), row.expected)
        << row.start << " " << row.seconds << " " << row.timeBase.num << "/" << row.timeBase.den;
}

TEST(ElapseTimeToPts, UsesTheStreamsTimeBase) {
  const auto source = kolum::media::Source::open(twoSecondGroups("ts"));
  ASSERT_TRUE(source);
  const auto input = kolum::ffmpeg::Input::open(*source, kolum::ffmpeg::Depth::kHeader);
  ASSERT_TRUE(input);
  ASSERT_FALSE(input->container().streams.empty());
  AVStream* stream = input->raw(input->container().streams[0]);
  EXPECT_EQ(ElapseTimeToPts(stream, 126000, 10), 1026000);
  EXPECT_EQ(ElapseTimeToPts(stream, 0, 47722), 4294980000);
  EXPECT_EQ(ElapseTimeToPts(nullptr, 5, 10), 5);
}

}  // namespace
