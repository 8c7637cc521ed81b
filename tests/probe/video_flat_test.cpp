// The flat entry points, compared with the record on the same files.
#include <gtest/gtest.h>
#include <kolum/identifiers.h>
#include <kolum/video.h>

#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "base/shell.h"
#include "support/appliance_sandbox.h"
#include "support/child_process.h"
#include "support/descriptors.h"
#include "support/disc_media.h"
#include "support/log_recorder.h"
#include "support/media_factory.h"
#include "support/mp4_builder.h"
#include "support/temp_dir.h"

using namespace kolum::test;
using kolum::shellWord;

namespace {

constexpr int kPattern = 0x5A5A5A5A;

const std::string kAudioVideo =
    "-f lavfi -i testsrc=s=176x144:r=25:d=1 -f lavfi -i sine=d=1:r=44100 -pix_fmt yuv420p ";

std::string h264Mp4() {
  return media("h264-aac.mp4", kAudioVideo + "-c:v libx264 -c:a aac -ac 2");
}

// Every output of the flat probes, filled with a pattern.
struct Flat {
  unsigned result = 0;
  int width = kPattern, height = kPattern, bitRate = kPattern, videoBitRate = kPattern;
  int audioBitRate = kPattern, sampleRate = kPattern, bitsPerSample = kPattern;
  int channels = kPattern, duration = kPattern, playException = kPattern;
  std::string mimeType, dlnaProfile;
  int containerFormat = kPattern, videoCodec = kPattern, videoProfile = kPattern;
  int videoLevel = kPattern, audioCodec = kPattern, audioProfile = kPattern;
  int audioLevel = kPattern, orientation = kPattern, subtitleMode = kPattern;
  int subtitleCount = kPattern;
  std::string yearMonth, creationDate;
  std::int64_t creationTime = kPattern;
  double frameRate = -1;
  int sampleAspectNum = kPattern, sampleAspectDen = kPattern;
  int displayAspectNum = kPattern, displayAspectDen = kPattern;
  int is360 = kPattern;
};

// The content of the text buffers before a probe.
constexpr char kKept[] = "kept";

// The caller's text buffers, each followed by a guard.
struct Texts {
  char mimeType[96];
  char guard1[8];
  char dlnaProfile[128];
  char guard2[8];
  char yearMonth[8];
  char guard3[8];
  char creationDate[12];
  char guard4[8];

  Texts() {
    std::memset(this, '#', sizeof *this);
    for (char* text : {mimeType, dlnaProfile, yearMonth, creationDate})
      std::memcpy(text, kKept, sizeof kKept);
  }
  void into(Flat& flat) const {
    for (const char* guard : {guard1, guard2, guard3, guard4})
      EXPECT_EQ(std::string(guard, 8), "########");
    const auto text = [](const char* buffer, std::size_t size) {
      return std::string(buffer, strnlen(buffer, size));
    };
    flat.mimeType = text(mimeType, sizeof mimeType);
    flat.dlnaProfile = text(dlnaProfile, sizeof dlnaProfile);
    flat.yearMonth = text(yearMonth, sizeof yearMonth);
    flat.creationDate = text(creationDate, sizeof creationDate);
  }
};

struct Split {
  std::string folder;
  std::string name;
};

Split split(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return {path.substr(0, slash + 1), path.substr(slash + 1)};
}

Flat probe3(const std::string& path, int audioStreamIndex = 0) {
  Flat f;
  Texts t;
  const auto [folder, name] = split(path);
  f.result = GetVideoMetadata3(
      folder.c_str(), name.c_str(), &f.width, &f.height, &f.bitRate, &f.videoBitRate,
      &f.audioBitRate, &f.sampleRate, &f.bitsPerSample, &f.channels, &f.duration, &f.playException,
      t.mimeType, t.dlnaProfile, &f.containerFormat, &f.videoCodec, &f.videoProfile, &f.videoLevel,
      &f.audioCodec, &f.audioProfile, &f.audioLevel, &f.orientation, &f.subtitleMode,
      &f.subtitleCount, t.yearMonth, t.creationDate, &f.creationTime, audioStreamIndex,
      &f.frameRate, &f.sampleAspectNum, &f.sampleAspectDen, &f.displayAspectNum,
      &f.displayAspectDen, &f.is360);
  t.into(f);
  return f;
}

Flat probe2(const std::string& path) {
  Flat f;
  Texts t;
  const auto [folder, name] = split(path);
  f.result = GetVideoMetadata2(
      folder.c_str(), name.c_str(), &f.width, &f.height, &f.bitRate, &f.videoBitRate,
      &f.audioBitRate, &f.sampleRate, &f.bitsPerSample, &f.channels, &f.duration, &f.playException,
      t.mimeType, t.dlnaProfile, &f.containerFormat, &f.videoCodec, &f.videoProfile, &f.videoLevel,
      &f.audioCodec, &f.audioProfile, &f.audioLevel, &f.orientation, &f.subtitleMode, t.yearMonth,
      t.creationDate, &f.creationTime, 0, &f.frameRate, &f.sampleAspectNum, &f.sampleAspectDen,
      &f.displayAspectNum, &f.displayAspectDen);
  t.into(f);
  return f;
}

Flat probe1(const std::string& path) {
  Flat f;
  Texts t;
  const auto [folder, name] = split(path);
  f.result = GetVideoMetadata1(
      folder.c_str(), name.c_str(), &f.width, &f.height, &f.bitRate, &f.videoBitRate,
      &f.audioBitRate, &f.sampleRate, &f.bitsPerSample, &f.channels, &f.duration, &f.playException,
      t.mimeType, t.dlnaProfile, &f.containerFormat, &f.videoCodec, &f.videoProfile, &f.videoLevel,
      &f.audioCodec, &f.audioProfile, &f.audioLevel, &f.orientation, &f.subtitleMode,
      &f.subtitleCount, t.yearMonth, t.creationDate, &f.creationTime, &f.is360);
  t.into(f);
  return f;
}

Flat probe0(const std::string& path) {
  Flat f;
  Texts t;
  const auto [folder, name] = split(path);
  f.result = GetVideoMetadata(folder.c_str(), name.c_str(), &f.width, &f.height, &f.bitRate,
                              &f.videoBitRate, &f.audioBitRate, &f.sampleRate, &f.bitsPerSample,
                              &f.channels, &f.duration, &f.playException, t.mimeType, t.dlnaProfile,
                              &f.containerFormat, &f.videoCodec, &f.videoProfile, &f.videoLevel,
                              &f.audioCodec, &f.audioProfile, &f.audioLevel, &f.orientation,
                              &f.subtitleMode, t.yearMonth, t.creationDate, &f.creationTime);
  t.into(f);
  return f;
}

videoObject_st probeRecord(const std::string& path, int audioStreamIndex = 0) {
  videoObject_st record = {};
  record.sampleAspectNum = record.sampleAspectDen = kPattern;
  record.displayAspectNum = record.displayAspectDen = kPattern;
  const auto [folder, name] = split(path);
  EXPECT_EQ(GetVideoMetadata1(folder.c_str(), name.c_str(), &record, audioStreamIndex), 0U);
  return record;
}

// The record clears its texts, the flat probes do not.
std::string reportedOrKept(const char* text) {
  return text[0] != '\0' ? text : kKept;
}

// Compares everything that the flat probes and the record have in common.
void expectSame(const Flat& flat, const videoObject_st& record) {
  EXPECT_EQ(flat.result, 0U);
  EXPECT_EQ(flat.width, record.width);
  EXPECT_EQ(flat.height, record.height);
  EXPECT_EQ(static_cast<unsigned>(flat.bitRate), record.bitRate);
  EXPECT_EQ(static_cast<unsigned>(flat.videoBitRate), record.videoBitRate);
  EXPECT_EQ(static_cast<unsigned>(flat.audioBitRate), record.audioBitRate);
  EXPECT_EQ(static_cast<unsigned>(flat.sampleRate), record.sampleRate);
  EXPECT_EQ(static_cast<unsigned>(flat.bitsPerSample), record.bitsPerSample);
  EXPECT_EQ(static_cast<unsigned>(flat.channels), record.channels);
  EXPECT_EQ(flat.duration, record.duration);
  EXPECT_EQ(flat.mimeType, reportedOrKept(record.mimeType));
  EXPECT_EQ(flat.dlnaProfile, reportedOrKept(record.dlnaProfile));
  EXPECT_EQ(static_cast<unsigned>(flat.containerFormat), record.containerFormat);
  EXPECT_EQ(flat.videoCodec, record.videoCodec);
  EXPECT_EQ(flat.videoProfile, record.videoProfile);
  EXPECT_EQ(flat.videoLevel, record.videoLevel);
  EXPECT_EQ(flat.audioCodec, record.audioCodec);
  EXPECT_EQ(flat.audioProfile, record.audioProfile);
  EXPECT_EQ(flat.audioLevel, record.audioLevel);
  if (record.playException != 0) {
    EXPECT_EQ(static_cast<unsigned>(flat.playException), record.playException);
  } else {
    EXPECT_EQ(flat.playException, kPattern);
  }
}

struct Sample {
  const char* name;
  const char* arguments;
};

const Sample kSamples[] = {
    {"same.mp4", "-c:v libx264 -c:a aac -ac 2"},
    {"same.mov", "-c:v mpeg4 -c:a pcm_s16be"},
    {"same.avi", "-c:v mpeg4 -vtag XVID -c:a libmp3lame"},
    {"same.mkv", "-c:v libx264 -c:a ac3"},
    {"same.ts", "-c:v mpeg2video -c:a ac3 -f mpegts"},
    {"same.m2ts", "-c:v libx264 -c:a ac3 -f mpegts -mpegts_m2ts_mode 1"},
    {"same.mpg", "-c:v mpeg2video -c:a mp2 -f vob"},
    {"same.wmv", "-c:v wmv2 -c:a wmav2"},
    {"same.3gp", "-c:v mpeg4 -c:a aac -ar 8000 -ac 1"},
    {"same.flv", "-c:v flv1 -c:a libmp3lame"},
};

TEST(FlatProbe, AgreesWithTheRecordThroughEveryEntryPoint) {
  for (const Sample& sample : kSamples) {
    SCOPED_TRACE(sample.name);
    const std::string path = media(sample.name, kAudioVideo + sample.arguments);
    const videoObject_st record = probeRecord(path);
    const Flat three = probe3(path);
    expectSame(three, record);
    EXPECT_DOUBLE_EQ(three.frameRate, record.frameRate);
    EXPECT_EQ(three.sampleAspectNum, record.sampleAspectNum);
    EXPECT_EQ(three.sampleAspectDen, record.sampleAspectDen);
    EXPECT_EQ(three.displayAspectNum, record.displayAspectNum);
    EXPECT_EQ(three.displayAspectDen, record.displayAspectDen);
    const Flat two = probe2(path);
    expectSame(two, record);
    EXPECT_DOUBLE_EQ(two.frameRate, record.frameRate);
    EXPECT_EQ(two.displayAspectNum, record.displayAspectNum);
    expectSame(probe1(path), record);
    expectSame(probe0(path), record);
  }
}

TEST(FlatProbe, PresetsItsOutputsBeforeAnythingCanFail) {
  for (const auto probe : {probe0, probe1, probe2}) {
    const Flat flat = probe("/nonexistent/a.mp4");
    EXPECT_EQ(flat.result, 1U);
    EXPECT_EQ(flat.orientation, 1);
    EXPECT_EQ(flat.subtitleMode, 16);
  }
  EXPECT_EQ(probe1("/nonexistent/a.mp4").subtitleCount, 0);
  EXPECT_EQ(probe1("/nonexistent/a.mp4").is360, 0);
  const Flat flat = probe3("/nonexistent/a.mp4");
  EXPECT_EQ(flat.orientation, 1);
  EXPECT_EQ(flat.subtitleMode, 16);
  EXPECT_EQ(flat.subtitleCount, 0);
  EXPECT_EQ(flat.is360, 0);
  EXPECT_EQ(flat.width, kPattern);
  EXPECT_EQ(flat.containerFormat, kPattern);
  EXPECT_EQ(flat.creationTime, kPattern);
  EXPECT_EQ(flat.sampleAspectNum, kPattern);
  EXPECT_EQ(flat.mimeType, kKept);
  EXPECT_EQ(flat.dlnaProfile, kKept);
  EXPECT_EQ(flat.yearMonth, kKept);
  EXPECT_EQ(flat.creationDate, kKept);
}

// Hosts keep earlier answers there.
TEST(FlatProbe, KeepsTheCallersTextsIfItHasNone) {
  const std::string path = media("texts.mkv", kAudioVideo + "-c:v libx264 -c:a ac3");
  EXPECT_STREQ(probeRecord(path).dlnaProfile, "");
  const Flat flat = probe3(path);
  EXPECT_EQ(flat.result, 0U);
  EXPECT_EQ(flat.mimeType, "video/x-matroska");
  EXPECT_EQ(flat.dlnaProfile, kKept);
  EXPECT_EQ(flat.yearMonth, kKept);
  EXPECT_EQ(flat.creationDate, kKept);
}

TEST(FlatProbe, ReportsOrientation1WithoutRotation) {
  EXPECT_EQ(probe0(h264Mp4()).orientation, 1);
  EXPECT_EQ(probe0(withTrackMatrix(h264Mp4(), rotationMatrix(90))).orientation, 8);
  EXPECT_EQ(probe0(withTrackMatrix(h264Mp4(), rotationMatrix(45))).orientation, 1);
}

std::string withSubtitles() {
  const std::string subtitles = made("lines.srt", "two lines", [](const std::string& path) {
    const TempDir work;
    std::filesystem::copy(work.write("a.srt",
                                     "1\n00:00:00,000 --> 00:00:01,000\none\n\n"
                                     "2\n00:00:01,000 --> 00:00:02,000\ntwo\n"),
                          path);
  });
  const std::string input = " -i " + shellWord(subtitles);
  return media("subtitles.mkv", "-f lavfi -i testsrc=s=176x144:d=1" + input + input +
                                    " -map 0 -map 1 -map 2 -pix_fmt yuv420p -c:v libx264 -c:s srt");
}

TEST(FlatProbe, CountsSubtitlesOfEveryFile) {
  const Flat flat = probe3(withSubtitles());
  EXPECT_EQ(flat.subtitleCount, 2);
  EXPECT_EQ(flat.subtitleMode, 0);
  EXPECT_EQ(probeRecord(withSubtitles()).subtitleCount, 0U);
  EXPECT_EQ(probe3(h264Mp4()).subtitleMode, 16);
}

TEST(FlatProbe, KeepsTheSubtitleModeOfDiscs) {
  // A Blu-ray folder whose stream file has subtitles; its demuxer is chosen by content, not by
  // name.
  const TempDir disc;
  disc.write("BDMV/index.bdmv", "INDX0200");
  std::filesystem::create_directory(disc.path("BDMV/STREAM"));
  std::filesystem::copy_file(withSubtitles(), disc.path("BDMV/STREAM/00000.m2ts"));
  const Flat flat = probe3(disc.path("BDMV/index.bdmv"));
  EXPECT_EQ(flat.result, 0U);
  EXPECT_EQ(flat.subtitleCount, 2);
  EXPECT_EQ(flat.subtitleMode, 16);
  EXPECT_EQ(probeRecord(disc.path("BDMV/index.bdmv")).subtitleCount, 2U);
}

TEST(FlatProbe, LogsAnEmptyLineForEachVideoStream) {
  const std::string path =
      media("two-videos.mkv",
            "-f lavfi -i testsrc=s=176x144:d=1 -f lavfi -i testsrc=s=320x240:d=1 -map 0 -map 1 "
            "-pix_fmt yuv420p -c:v libx264");
  LogRecorder log;
  EXPECT_EQ(probe3(path).width, 320);
  ASSERT_EQ(log.messages().size(), 2U);
  for (const LogMessage& message : log.messages()) {
    EXPECT_EQ(message.text, "");
    EXPECT_EQ(message.function, "GetVideoMetadata3");
    EXPECT_EQ(message.source, "MediaInfo");
  }
}

TEST(FlatProbe, ReportsTime0WithoutCreationDate) {
  EXPECT_EQ(probe3(h264Mp4()).creationTime, 0);
  EXPECT_EQ(probe3(h264Mp4()).yearMonth, kKept);
  // ffmpeg itself would not write an invalid date.
  const std::string undated =
      replaced(media("undated.mkv",
                     kAudioVideo + "-c:v libx264 -c:a ac3 -metadata:s:v creaXion_time=yesterday"),
               "CREAXION_TIME", "CREATION_TIME");
  ASSERT_EQ(ffprobe(undated)["streams"][0]["tags"]["CREATION_TIME"], "yesterday");
  EXPECT_EQ(probe3(undated).creationTime, 0);
  const std::string created = media("created-flat.mp4", kAudioVideo +
                                                            "-c:v libx264 -metadata "
                                                            "creation_time=2015-06-07T20:09:10Z");
  runInChild(
      [&] {
        const Flat flat = probe3(created);
        EXPECT_EQ(flat.creationTime, 1433707750);
        EXPECT_EQ(flat.yearMonth, "2015-06");
        EXPECT_EQ(flat.creationDate, "2015-06-07");
      },
      {{"TZ", "UTC"}});
}

TEST(FlatProbe, DoesNotReadQuickTimesEntries) {
  const std::string path = media(
      "quicktime.mov", kAudioVideo +
                           "-c:v libx264 -movflags use_metadata_tags "
                           "-metadata com.apple.quicktime.creationdate=2014-05-06T07:08:09+0200");
  LogRecorder log;
  const Flat flat = probe3(path);
  EXPECT_EQ(flat.creationTime, 0);
  EXPECT_EQ(flat.creationDate, kKept);
  for (const std::string& text : log.texts()) EXPECT_EQ(text, "");
}

TEST(FlatProbe, WritesAspectOnlyIfAllFourOutputsAreGiven) {
  const std::string path = media("aspect.mkv",
                                 "-f lavfi -i testsrc=s=720x576:r=25:d=0.2 -vf setsar=16/15 "
                                 "-pix_fmt yuv420p -c:v mpeg2video");
  const Flat all = probe3(path);
  EXPECT_EQ(all.sampleAspectNum, 16);
  EXPECT_EQ(all.sampleAspectDen, 15);
  EXPECT_EQ(all.displayAspectNum, 4);
  EXPECT_EQ(all.displayAspectDen, 3);

  const auto [folder, name] = split(path);
  for (int missing = 0; missing < 4; ++missing) {
    int values[4] = {kPattern, kPattern, kPattern, kPattern};
    int* outputs[4] = {&values[0], &values[1], &values[2], &values[3]};
    outputs[missing] = nullptr;
    Flat f;
    EXPECT_EQ(GetVideoMetadata3(folder.c_str(), name.c_str(), &f.width, nullptr, nullptr, nullptr,
                                nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 0,
                                nullptr, outputs[0], outputs[1], outputs[2], outputs[3], nullptr),
              0U);
    EXPECT_EQ(f.width, 720);
    for (const int value : values) EXPECT_EQ(value, kPattern);
  }
}

TEST(FlatProbe, SkipsNullOutputs) {
  const auto [folder, name] = split(h264Mp4());
  EXPECT_EQ(GetVideoMetadata(folder.c_str(), name.c_str(), nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr, nullptr, nullptr),
            0U);
  EXPECT_EQ(GetVideoMetadata(nullptr, name.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr, nullptr),
            1U);
}

TEST(FlatProbe, ReportsEquirectangularVideo) {
  EXPECT_EQ(probe3(withSphericalBox(h264Mp4())).is360, 1);
  EXPECT_EQ(probe1(withSphericalBox(h264Mp4())).is360, 1);
  EXPECT_EQ(probe3(h264Mp4()).is360, 0);
}

TEST(FlatProbe, ChoosesTheNameByTheAudioStream) {
  const std::string path =
      media("two-audio.mp4",
            "-f lavfi -i testsrc=s=1280x720:r=25:d=0.4 -f lavfi -i sine=d=0.4:r=48000 "
            "-f lavfi -i sine=d=0.4:r=48000 -map 0 -map 1 -map 2 -pix_fmt yuv420p -c:v libx264 "
            "-preset ultrafast -profile:v main -c:a:0 ac3 -c:a:1 aac -ac 2");
  for (const int index : {0, 1}) {
    SCOPED_TRACE(index);
    const videoObject_st record = probeRecord(path, index);
    EXPECT_EQ(probe3(path, index).dlnaProfile, reportedOrKept(record.dlnaProfile));
    EXPECT_EQ(record.audioClass, index == 0 ? 2U : 8U);
    EXPECT_EQ(std::string(record.dlnaProfile).empty(), index == 0);
  }
}

TEST(FlatProbe, ProbesDvdFolderLikeTheRecord) {
  for (const std::string& folder : {dvdFolder(), largeDvdFolder()})
    expectSame(probe3(folder + "VIDEO_TS.IFO"), probeRecord(folder + "VIDEO_TS.IFO"));
}

bool hasMountFolder() {
  for (const auto& entry : std::filesystem::directory_iterator("/tmp"))
    if (entry.path().filename().string().starts_with("Media_mount_")) return true;
  return false;
}

TEST(FlatProbe, OpensDiscImagesAndUnmountsThem) {
  if (const auto why = loopMountUnavailable()) GTEST_SKIP() << *why;
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  const std::string dvd = discImage(discRoot(dvdFolder()), "flat-dvd.iso");
  const std::string largeDvd = largeDvdImage();
  const std::string bluray = discImage(discRoot(blurayFolder()), "flat-bluray.ISO");
  runInAppliance([&] {
    const Flat fromDvd = probe3(dvd);
    EXPECT_EQ(fromDvd.result, 0U);
    // Also for images it is the demuxer's format.
    EXPECT_EQ(fromDvd.containerFormat, FORMAT_MPEG);
    EXPECT_EQ(fromDvd.videoCodec, CODEC_ID_MPEG2VIDEO);
    EXPECT_EQ(fromDvd.width, 720);
    EXPECT_EQ(fromDvd.duration, 0) << "scaled by less than a gibibyte";
    EXPECT_EQ(probe3(largeDvd).duration, 2 * 5420 / 1024);
    EXPECT_FALSE(hasMountFolder());

    const Flat fromBluray = probe3(bluray);
    EXPECT_EQ(fromBluray.result, 0U);
    EXPECT_EQ(fromBluray.containerFormat, FORMAT_TS);
    EXPECT_EQ(fromBluray.videoCodec, CODEC_ID_H264);
    EXPECT_EQ(fromBluray.duration, 3) << "not scaled: Blu-ray titles have no size";
    EXPECT_FALSE(hasMountFolder());
  });
}

TEST(FlatProbe, UnmountsImagesWhateverFails) {
  if (const auto why = loopMountUnavailable()) GTEST_SKIP() << *why;
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  const TempDir content;
  content.write("neither/readme.txt", "no disc");
  content.write("text/BDMV/STREAM/00000.m2ts", "no video");
  const std::string song = media("song.m4a", "-f lavfi -i sine=d=1:r=44100 -c:a aac -ac 2");
  std::filesystem::create_directories(content.path("audio/BDMV/STREAM"));
  std::filesystem::copy(song, content.path("audio/BDMV/STREAM/00000.m2ts"));
  const std::string neither = discImage(content.path("neither"), "neither.iso");
  const std::string text = discImage(content.path("text"), "text.iso");
  const std::string audio = discImage(content.path("audio"), "audio.iso");
  runInAppliance([&] {
    const ExpectNoDescriptorLeak leak;
    EXPECT_EQ(probe3(neither).result, 1U);
    EXPECT_EQ(probe3(neither).containerFormat, kPattern);
    const Flat noVideo = probe3(text);
    EXPECT_EQ(noVideo.result, 1U);
    EXPECT_EQ(noVideo.containerFormat, FORMAT_BDISO) << "set before the failure";
    const Flat noPicture = probe3(audio);
    EXPECT_EQ(noPicture.result, 1U);
    EXPECT_EQ(noPicture.audioCodec, CODEC_ID_AAC);
    const TempDir broken;
    EXPECT_EQ(probe3(broken.write("broken.iso", "no file system")).result, 1U);
    EXPECT_FALSE(hasMountFolder());
  });
}

}  // namespace
