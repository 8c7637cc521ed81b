// Media info records of real files, compared with ffprobe.
#include <gtest/gtest.h>
#include <kolum/identifiers.h>
#include <kolum/mediainfo.h>
#include <kolum/video.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "base/shell.h"
#include "support/child_process.h"
#include "support/descriptors.h"
#include "support/disc_media.h"
#include "support/media_factory.h"
#include "support/mp4_builder.h"
#include "support/temp_dir.h"

using namespace kolum::test;
using kolum::shellWord;

namespace {

constexpr double kUntouched = 4711.5;

struct InfoDeleter {
  void operator()(MediaInfo* info) const { Free_MediaInfo(info); }
};
using OwnedInfo = std::unique_ptr<MediaInfo, InfoDeleter>;

// The record of a file for which the call must succeed.
OwnedInfo infoOf(const std::string& path) {
  MediaInfo* info = nullptr;
  EXPECT_EQ(GetMediaInfo(path.c_str(), &info, 0, nullptr), 0U) << path;
  EXPECT_NE(info, nullptr) << path;
  if (info == nullptr) throw std::runtime_error("no media info of " + path);
  return OwnedInfo(info);
}

const MediaStreamInfo* firstOf(const MediaInfo& info, unsigned type) {
  for (int i = 0; i < info.streamCount; ++i)
    if (info.streams[i].streamType == type) return &info.streams[i];
  return nullptr;
}

const std::string kVideo = "-f lavfi -i testsrc=s=176x144:r=25:d=1 -pix_fmt yuv420p ";
const std::string kAudio = "-f lavfi -i sine=d=1:r=44100 -ac 2 ";
const std::string kBoth =
    "-f lavfi -i testsrc=s=176x144:r=25:d=1 -f lavfi -i sine=d=1:r=44100 -ac 2 -pix_fmt yuv420p ";

std::string subtitleFile() {
  return made("words.srt", "one line", [](const std::string& path) {
    std::ofstream(path) << "1\n00:00:00,000 --> 00:00:01,000\nwords\n";
  });
}

std::string everyKindOfStream() {
  const std::string words = shellWord(subtitleFile());
  return media("every.mkv", "-f lavfi -i testsrc=s=176x144:r=25:d=1 -f lavfi -i sine=d=1 -i " +
                                words + " -map 0 -map 1 -map 2 -pix_fmt yuv420p -c:v libx264 " +
                                "-c:a ac3 -c:s srt -attach " + words +
                                " -metadata:s:t mimetype=text/plain");
}

struct MediaRow {
  const char* name;
  std::string arguments;
  unsigned containerFormat;
};

// A row for every demuxer with a container format, and for some without one.
const std::vector<MediaRow>& mediaRows() {
  static const std::vector<MediaRow> rows = {
      {"a.asf", kBoth + "-c:v wmv2 -c:a wmav2", FORMAT_ASF},
      {"a.mp4", kBoth + "-c:v libx264 -c:a aac", FORMAT_MPEG4},
      {"a.mov", kBoth + "-c:v mpeg4 -c:a pcm_s16le -timecode 00:00:00:00", FORMAT_MPEG4},
      {"a.3gp", kBoth + "-c:v h263 -c:a aac", FORMAT_MPEG4},
      {"a.avi", kBoth + "-c:v mpeg4 -c:a mp3", FORMAT_AVI},
      {"a.mpg", kBoth + "-c:v mpeg2video -c:a mp2", FORMAT_MPEG},
      {"a.ts", kBoth + "-c:v libx264 -c:a aac", FORMAT_TS},
      {"a.m2ts", kBoth + "-c:v libx264 -c:a ac3", FORMAT_TS},
      {"a.mkv", kBoth + "-c:v libx265 -x265-params log-level=none -c:a flac", FORMAT_MKV},
      {"a.webm", kBoth + "-c:v libvpx -c:a libvorbis", FORMAT_MKV},
      {"a.flv", kBoth + "-c:v flv1 -c:a mp3", FORMAT_FLV},
      {"a.rm", kBoth + "-c:v rv20 -c:a ac3", FORMAT_RM},
      {"a.ogv", kBoth + "-c:v libtheora -c:a libvorbis", FORMAT_UNKNOWN},
      {"a.mp3", kAudio + "-c:a libmp3lame", FORMAT_UNKNOWN},
      {"a.wav", kAudio + "-c:a pcm_s24le", FORMAT_UNKNOWN},
      {"a.flac", kAudio + "-c:a flac", FORMAT_UNKNOWN},
  };
  return rows;
}

// FFmpeg's classic number for ffprobe's name of a codec.
unsigned classicNumber(const std::string& codec) {
  static const std::map<std::string, unsigned> numbers = {
      {"aac", 0x15002},       {"ac3", 0x15003},    {"flac", 0x1500C},
      {"flv1", 22},           {"h263", 5},         {"h264", 28},
      {"hevc", 174},          {"mp2", 0x15000},    {"mp3", 0x15001},
      {"mpeg2video", 2},      {"mpeg4", 13},       {"pcm_s16le", 0x10000},
      {"pcm_s24le", 0x1000C}, {"rv20", 7},         {"subrip", 0x17808},
      {"theora", 31},         {"vorbis", 0x15005}, {"vp8", 140},
      {"wmav2", 0x15008},     {"wmv2", 19},
  };
  return numbers.at(codec);
}

int numberBefore(char separator, const std::string& text) {
  return std::stoi(text.substr(0, text.find(separator)));
}

int numberAfter(char separator, const std::string& text) {
  return std::stoi(text.substr(text.find(separator) + 1));
}

void expectLikeFfprobe(const MediaStreamInfo& entry, const nlohmann::json& stream) {
  EXPECT_EQ(entry.codecId, classicNumber(stream["codec_name"]));
  if (stream.contains("id")) {
    EXPECT_EQ(entry.streamId, std::stoi(stream["id"].get<std::string>(), nullptr, 16));
  }
  if (entry.streamType == MEDIA_STREAM_VIDEO) {
    const std::string rate = stream["r_frame_rate"];
    EXPECT_EQ(entry.width, stream["width"]);
    EXPECT_EQ(entry.height, stream["height"]);
    EXPECT_EQ(entry.level, stream["level"]);
    EXPECT_EQ(entry.frameRateNum, numberBefore('/', rate));
    EXPECT_EQ(entry.frameRateDen, numberAfter('/', rate));
    EXPECT_EQ(std::to_string(entry.bitRate), stream.value("bit_rate", "0"));
    EXPECT_EQ(entry.frameRate, numberBefore('/', rate) / numberAfter('/', stream["time_base"]));
  }
  if (entry.streamType == MEDIA_STREAM_AUDIO) {
    EXPECT_EQ(stream["sample_rate"], std::to_string(entry.sampleRate));
    EXPECT_EQ(entry.channels, stream["channels"]);
  }
}

unsigned streamType(const std::string& ffprobeName) {
  return ffprobeName == "video"   ? MEDIA_STREAM_VIDEO
         : ffprobeName == "audio" ? MEDIA_STREAM_AUDIO
                                  : MEDIA_STREAM_SUBTITLE;
}

void expectLikeFfprobe(const MediaInfo& info, const nlohmann::json& probed) {
  EXPECT_EQ(std::to_string(info.bitRate), probed["format"].value("bit_rate", "0"));
  EXPECT_EQ(info.duration,
            static_cast<unsigned>(std::stod(probed["format"]["duration"].get<std::string>())));
  int next = 0;
  for (const auto& stream : probed["streams"]) {
    const std::string type = stream["codec_type"];
    if (type != "video" && type != "audio" && type != "subtitle") continue;
    SCOPED_TRACE(type);
    ASSERT_LT(next, info.streamCount);
    EXPECT_EQ(info.streams[next].streamType, streamType(type));
    expectLikeFfprobe(info.streams[next], stream);
    ++next;
  }
  EXPECT_EQ(info.streamCount, next);
}

TEST(GetMediaInfo, AgreesWithFfprobeOnEveryContainer) {
  for (const MediaRow& row : mediaRows()) {
    SCOPED_TRACE(row.name);
    const std::string path = media(row.name, row.arguments);
    const OwnedInfo info = infoOf(path);
    EXPECT_EQ(info->containerFormat, row.containerFormat);
    EXPECT_EQ(info->sourceKind, static_cast<unsigned>(FORMAT_UNKNOWN));
    expectLikeFfprobe(*info, ffprobe(path));
  }
}

TEST(GetMediaInfo, ListsVideoAudioAndSubtitlesAndSkipsAttachments) {
  const std::string path = everyKindOfStream();
  ASSERT_EQ(ffprobe(path)["streams"].size(), 4U);
  const OwnedInfo info = infoOf(path);
  ASSERT_EQ(info->streamCount, 3);
  EXPECT_EQ(info->streams[0].streamType, static_cast<unsigned>(MEDIA_STREAM_VIDEO));
  EXPECT_EQ(info->streams[1].streamType, static_cast<unsigned>(MEDIA_STREAM_AUDIO));
  EXPECT_EQ(info->streams[2].streamType, static_cast<unsigned>(MEDIA_STREAM_SUBTITLE));
  expectLikeFfprobe(*info, ffprobe(path));
}

TEST(GetMediaInfo, SkipsDataStreams) {
  const std::string path =
      media("timecode.mov", kBoth + "-c:v mpeg4 -c:a pcm_s16le -timecode 00:00:00:00");
  ASSERT_EQ(ffprobe(path)["streams"].size(), 3U);
  EXPECT_EQ(infoOf(path)->streamCount, 2);
}

TEST(GetMediaInfo, LeavesFieldsOfOtherStreamTypesAtZero) {
  const OwnedInfo info = infoOf(everyKindOfStream());
  const MediaStreamInfo& video = info->streams[0];
  EXPECT_EQ(video.sampleRate | video.bitsPerSample | video.channels | video.reserved, 0U);
  const MediaStreamInfo& audio = info->streams[1];
  EXPECT_EQ(audio.width | audio.height | audio.rotation | audio.frameRate | audio.frameRateNum |
                audio.frameRateDen,
            0);
  EXPECT_EQ(audio.isDivx | audio.reserved, 0U);
  const MediaStreamInfo& words = info->streams[2];
  MediaStreamInfo expected = {};
  expected.streamType = MEDIA_STREAM_SUBTITLE;
  expected.codecId = 0x17808;
  expected.streamId = words.streamId;
  EXPECT_EQ(std::memcmp(&words, &expected, sizeof words), 0);
}

TEST(GetMediaInfo, ConvertsTheVideoProfile) {
  const std::string path = media("high.mp4", kVideo + "-c:v libx264 -profile:v high -level 3.1");
  const MediaStreamInfo video = infoOf(path)->streams[0];
  EXPECT_EQ(video.profile, 260098);
  EXPECT_EQ(video.level, 31);
}

TEST(GetMediaInfo, KeepsTheAudioProfileInTheBitRateField) {
  const OwnedInfo aac = infoOf(media("lc.m4a", kAudio + "-c:a aac -b:a 96k"));
  EXPECT_EQ(aac->streams[0].bitRate, 4U);
  EXPECT_EQ(aac->streams[0].profile, 0);
  EXPECT_EQ(aac->streams[0].level, -99) << "FFmpeg's \"unknown\": AAC has no levels";

  const OwnedInfo mp3 = infoOf(media("a.mp3", kAudio + "-c:a libmp3lame"));
  EXPECT_EQ(static_cast<int>(mp3->streams[0].bitRate), -99);
  EXPECT_EQ(mp3->streams[0].profile, 0);
}

TEST(GetMediaInfo, ReportsTheCodedBitsPerSample) {
  EXPECT_EQ(infoOf(media("a.wav", kAudio + "-c:a pcm_s24le"))->streams[0].bitsPerSample, 24U);
}

TEST(GetMediaInfo, DividesFrameRateNumeratorByTimeBaseDenominator) {
  // 25 frames/s; time bases of 1/25 and 1/12800.
  const MediaStreamInfo avi = infoOf(media("rate.avi", kVideo + "-c:v mpeg4"))->streams[0];
  EXPECT_EQ(avi.frameRateNum, 25);
  EXPECT_EQ(avi.frameRateDen, 1);
  EXPECT_EQ(avi.frameRate, 1);
  const MediaStreamInfo mp4 = infoOf(media("rate.mp4", kVideo + "-c:v mpeg4"))->streams[0];
  EXPECT_EQ(mp4.frameRateNum, 25);
  EXPECT_EQ(mp4.frameRate, 0);
}

TEST(GetMediaInfo, ReportsTheTransportStreamsPidAsStreamId) {
  const std::string path =
      media("pid.ts", kBoth + "-c:v mpeg2video -c:a mp2 -streamid 0:0x1FF -streamid 1:0x200");
  const OwnedInfo info = infoOf(path);
  EXPECT_EQ(info->streams[0].streamId, 0x1FF);
  EXPECT_EQ(info->streams[1].streamId, 0x200);
}

TEST(GetMediaInfo, RecognisesDivxByItsTagInAviOnly) {
  struct Row {
    const char* name;
    const char* arguments;
    unsigned isDivx;
  };
  const Row rows[] = {
      {"xvid.avi", "-c:v mpeg4 -vtag XVID", 1},  {"dx50.avi", "-c:v mpeg4 -vtag DX50", 1},
      {"divx.avi", "-c:v mpeg4 -vtag DIVX", 1},  {"fmp4.avi", "-c:v mpeg4 -vtag FMP4", 0},
      {"lower.avi", "-c:v mpeg4 -vtag xvid", 0}, {"div3.avi", "-c:v msmpeg4", 0},
      {"xvid.mkv", "-c:v mpeg4 -vtag XVID", 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(infoOf(media(row.name, kVideo + row.arguments))->streams[0].isDivx, row.isDivx);
  }
}

TEST(GetMediaInfo, ReportsRightAnglesOnly) {
  struct Row {
    const char* tag;
    int rotation;
  };
  const Row rows[] = {{"90", 90},  {"180", 180},       {"270", 270},  {"-90", 0},
                      {"45", 0},   {"0", 0},           {"360", 0},    {"90.5", 90},
                      {" 90", 90}, {"90 degrees", 90}, {"ninety", 0}, {"4294967386", 0}};
  for (const Row& row : rows)
    EXPECT_EQ(infoOf(withRotateTag(row.tag))->streams[0].rotation, row.rotation) << row.tag;
}

TEST(GetMediaInfo, ReadsRotationFromMp4TrackMatrix) {
  const std::string path = media("matrix.mp4", kVideo + "-c:v libx264");
  for (const int degrees : {0, 90, 180, 270})
    EXPECT_EQ(infoOf(withTrackMatrix(path, rotationMatrix(degrees)))->streams[0].rotation, degrees);
}

TEST(GetMediaInfo, StoresUnknownDurationAsTruncatedQuotient) {
  const std::string path = media("raw.h264", kVideo + "-c:v libx264");
  ASSERT_FALSE(ffprobe(path)["format"].contains("duration"));
  EXPECT_EQ(infoOf(path)->duration, static_cast<unsigned>(INT64_MIN / 1'000'000));
}

TEST(GetMediaInfo, ReportsCodecZeroForCodecsAfterRelease57) {
  const OwnedInfo info = infoOf(media("later.aptx", kAudio + "-c:a aptx"));
  ASSERT_EQ(info->streamCount, 1);
  EXPECT_EQ(info->streams[0].codecId, 0U);
  EXPECT_EQ(info->streams[0].channels, 2U);
}

// An AVI file that claims another video codec.
std::string aviOfCodec(const std::string& tag) {
  return replaced(media("fmp4.avi", kVideo + "-c:v mpeg4 -vtag FMP4"), "FMP4", tag);
}

TEST(GetMediaInfo, DescribesUndecodableCodecs) {
  // One that FFmpeg can only name, and one that it does not know at all.
  for (const char* tag : {"AVS2", "?#!x"}) {
    SCOPED_TRACE(tag);
    double time = kUntouched;
    MediaInfo* info = nullptr;
    ASSERT_EQ(GetMediaInfo(aviOfCodec(tag).c_str(), &info, 7, &time), 0U);
    const OwnedInfo owner(info);
    ASSERT_EQ(info->streamCount, 1);
    EXPECT_EQ(info->streams[0].codecId, 0U);
    EXPECT_EQ(info->streams[0].width, 176);
    EXPECT_EQ(time, 7.0);
  }
}

TEST(GetMediaInfo, ListsAttachedPicturesAsVideo) {
  const std::string picture = media("picture.jpg", "-f lavfi -i color=red:s=32x24:d=1 -frames:v 1");
  const OwnedInfo info = infoOf(
      media("cover.flac", "-f lavfi -i sine=d=1 -i " + shellWord(picture) +
                              " -map 0 -map 1 -c:a flac -c:v copy -disposition:v attached_pic"));
  ASSERT_EQ(info->streamCount, 2);
  const MediaStreamInfo* video = firstOf(*info, MEDIA_STREAM_VIDEO);
  ASSERT_NE(video, nullptr);
  EXPECT_EQ(video->codecId, 8U);
  EXPECT_EQ(video->width, 32);
}

TEST(GetMediaInfo, OpensTheMainTitleOfDvdFolder) {
  const OwnedInfo info = infoOf(dvdFolder() + "VIDEO_TS.IFO");
  EXPECT_EQ(info->sourceKind, static_cast<unsigned>(FORMAT_DVDIFO));
  EXPECT_EQ(info->containerFormat, static_cast<unsigned>(FORMAT_MPEG));
  EXPECT_EQ(info->duration, 2U);
  EXPECT_NE(firstOf(*info, MEDIA_STREAM_VIDEO), nullptr);
}

TEST(GetMediaInfo, OpensDiscInCurrentFolder) {
  runInChild([] {
    std::filesystem::current_path(dvdFolder());
    EXPECT_EQ(infoOf("VIDEO_TS.IFO")->sourceKind, static_cast<unsigned>(FORMAT_DVDIFO));
    videoObject_st record = {};
    EXPECT_EQ(GetVideoMetadata1("", "VIDEO_TS.IFO", &record, 0), 0U);
    EXPECT_GT(record.width, 0);
    std::filesystem::current_path(blurayFolder());
    EXPECT_EQ(infoOf("index.bdmv")->sourceKind, static_cast<unsigned>(FORMAT_BDBDMV));
  });
}

TEST(GetMediaInfo, OpensTheLargestStreamOfBlurayFolder) {
  const OwnedInfo info = infoOf(blurayFolder() + "index.bdmv");
  EXPECT_EQ(info->sourceKind, static_cast<unsigned>(FORMAT_BDBDMV));
  EXPECT_EQ(info->containerFormat, static_cast<unsigned>(FORMAT_TS));
  EXPECT_NE(firstOf(*info, MEDIA_STREAM_VIDEO), nullptr);
}

TEST(GetMediaInfo, AcceptsDiscNamesInExactSpellingOnly) {
  TempDir folder;
  const std::string mp4 = media("a.mp4", kBoth + "-c:v libx264 -c:a aac");
  for (const char* name : {"video_ts.ifo", "INDEX.BDMV", "Video_TS.IFO"}) {
    std::filesystem::copy_file(mp4, folder.path(name));
    EXPECT_EQ(infoOf(folder.path(name))->containerFormat, static_cast<unsigned>(FORMAT_MPEG4));
  }
}

void expectFailure(const std::string& path) {
  SCOPED_TRACE(path);
  auto* info = reinterpret_cast<MediaInfo*>(1);
  double time = kUntouched;
  EXPECT_EQ(GetMediaInfo(path.c_str(), &info, 5, &time), 1U);
  EXPECT_EQ(info, nullptr);
  EXPECT_EQ(time, kUntouched);
}

TEST(GetMediaInfo, RejectsDiscImages) {
  TempDir folder;
  const std::string mp4 = media("a.mp4", kBoth + "-c:v libx264 -c:a aac");
  for (const char* name : {"movie.iso", "movie.ISO", "movie.Iso", ".iso"}) {
    std::filesystem::copy_file(mp4, folder.path(name));
    expectFailure(folder.path(name));
  }
}

TEST(GetMediaInfo, FailsWithoutARecord) {
  TempDir folder;
  std::filesystem::create_directory(folder.path("folder.mkv"));
  expectFailure(folder.path("missing.mkv"));
  expectFailure(folder.path("folder.mkv"));
  expectFailure(folder.folder());
  expectFailure(folder.write("empty.mp4", ""));
  expectFailure(folder.write("text.mp4", "no media\n"));
  expectFailure(folder.write("none/VIDEO_TS.IFO", "no disc"));
  expectFailure(folder.write("none/index.bdmv", "no disc"));
  expectFailure("");
  expectFailure(folder.path(std::string(1024, 'x')));
}

TEST(GetMediaInfo, FailsForContainerWithoutStreams) {
  TempDir folder;
  expectFailure(folder.write("none.ffmeta", ";FFMETADATA1\ntitle=none\n"));
}

TEST(GetMediaInfo, FailsForTruncatedFile) {
  TempDir folder;
  const std::string mp4 = media("a.mp4", kBoth + "-c:v libx264 -c:a aac");
  std::filesystem::copy_file(mp4, folder.path("cut.mp4"));
  std::filesystem::resize_file(folder.path("cut.mp4"), std::filesystem::file_size(mp4) / 2);
  expectFailure(folder.path("cut.mp4"));
}

TEST(GetMediaInfo, DoesNotWaitForPipes) {
  TempDir folder;
  const std::string pipe = folder.path("pipe.mkv");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  withinSeconds(20, [&] { expectFailure(pipe); });
}

TEST(GetMediaInfo, RejectsNullArguments) {
  const std::string path = media("a.mp4", kBoth + "-c:v libx264 -c:a aac");
  auto* info = reinterpret_cast<MediaInfo*>(1);
  EXPECT_EQ(GetMediaInfo(nullptr, &info, 0, nullptr), 1U);
  EXPECT_EQ(info, nullptr);
  EXPECT_EQ(GetMediaInfo(path.c_str(), nullptr, 0, nullptr), 1U);
  Free_MediaInfo(nullptr);
}

TEST(GetMediaInfo, FindsNameWithoutFolder) {
  const std::string path = media("a.mp4", kBoth + "-c:v libx264 -c:a aac");
  std::filesystem::current_path(std::filesystem::path(path).parent_path());
  EXPECT_EQ(infoOf("a.mp4")->streamCount, 2);
}

TEST(GetMediaInfo, AcceptsNamesOfAnyBytes) {
  TempDir folder;
  const std::string mp4 = media("a.mp4", kBoth + "-c:v libx264 -c:a aac");
  for (const char* name : {"http:x.mp4", "-i.mp4", "\xFF\xFE.mp4", "a b'c\"d$e%s\n.mp4"}) {
    std::filesystem::copy_file(mp4, folder.path(name));
    EXPECT_EQ(infoOf(folder.path(name))->streamCount, 2) << name;
  }
}

TEST(GetMediaInfo, KeepsTheKeyFrameTimeUnlessASearchIsRequested) {
  const std::string path = media("a.mp4", kBoth + "-c:v libx264 -c:a aac");
  for (const std::int64_t seconds : {std::int64_t{0}, std::int64_t{-1}, INT64_MIN}) {
    MediaInfo* info = nullptr;
    double time = kUntouched;
    EXPECT_EQ(GetMediaInfo(path.c_str(), &info, seconds, &time), 0U);
    const OwnedInfo owner(info);
    EXPECT_EQ(time, kUntouched) << seconds;
  }
  MediaInfo* info = nullptr;
  EXPECT_EQ(GetMediaInfo(path.c_str(), &info, 1, nullptr), 0U);
  const OwnedInfo owner(info);
  EXPECT_NE(info, nullptr);
}

TEST(GetMediaInfo, KeepsTheKeyFrameTimeWithoutVideo) {
  const std::string path = media("a.flac", kAudio + "-c:a flac");
  MediaInfo* info = nullptr;
  double time = kUntouched;
  EXPECT_EQ(GetMediaInfo(path.c_str(), &info, 1, &time), 0U);
  const OwnedInfo owner(info);
  EXPECT_EQ(time, kUntouched);
}

TEST(GetMediaInfo, LeavesNoDescriptorOpen) {
  const std::string path = media("a.mp4", kBoth + "-c:v libx264 -c:a aac");
  infoOf(path);
  const ExpectNoDescriptorLeak leaks;
  TempDir folder;
  for (const std::string& each : {path, folder.write("text.mkv", "none"),
                                  dvdFolder() + "VIDEO_TS.IFO", blurayFolder() + "index.bdmv"}) {
    MediaInfo* info = nullptr;
    double time = 0;
    GetMediaInfo(each.c_str(), &info, 1, &time);
    Free_MediaInfo(info);
  }
}

}  // namespace
