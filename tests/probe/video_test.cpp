// The video probe that fills the record, on real files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kolum/identifiers.h>
#include <kolum/video.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>

#include "support/appliance_sandbox.h"
#include "support/child_process.h"
#include "support/descriptors.h"
#include "support/disc_media.h"
#include "support/log_recorder.h"
#include "support/media_factory.h"
#include "support/mp4_builder.h"
#include "support/temp_dir.h"

using namespace kolum::test;

namespace {

constexpr unsigned char kPattern = 0x5A;
constexpr int kPatternInt = 0x5A5A5A5A;
constexpr unsigned kPatternUnsigned = 0x5A5A5A5A;
constexpr std::int64_t kPatternLong = 0x5A5A5A5A5A5A5A5A;

const std::string kVideoArguments = "-f lavfi -i testsrc=s=176x144:r=25:d=1 -pix_fmt yuv420p ";
const std::string kAudioVideoArguments =
    "-f lavfi -i testsrc=s=176x144:r=25:d=1 -f lavfi -i sine=d=1:r=44100 -pix_fmt yuv420p ";

std::string h264Mp4() {
  return media("h264-aac.mp4", kAudioVideoArguments + "-c:v libx264 -c:a aac -ac 2");
}

struct Probed {
  unsigned result = 0;
  videoObject_st record = {};
};

videoObject_st patternRecord() {
  videoObject_st record;
  std::memset(&record, kPattern, sizeof record);
  return record;
}

Probed probe(const std::string& path, videoObject_st record = {}, int audioStreamIndex = 0) {
  const std::size_t slash = path.rfind('/');
  Probed probed = {.result = 0, .record = record};
  probed.result =
      GetVideoMetadata1(path.substr(0, slash + 1).c_str(), path.substr(slash + 1).c_str(),
                        &probed.record, audioStreamIndex);
  return probed;
}

// Expects that only the texts and the year were written.
void expectOnlyTextsCleared(const videoObject_st& record) {
  videoObject_st expected = patternRecord();
  std::memset(expected.yearMonth, 0, sizeof expected.yearMonth);
  std::memset(expected.creationDate, 0, sizeof expected.creationDate);
  expected.creationYear = 0;
  std::memset(expected.mimeType, 0, sizeof expected.mimeType);
  std::memset(expected.dlnaProfile, 0, sizeof expected.dlnaProfile);
  std::memset(expected.contentIdentifier, 0, sizeof expected.contentIdentifier);
  EXPECT_EQ(std::memcmp(&record, &expected, sizeof record), 0);
}

TEST(VideoProbe, FillsTheRecordOfAnOrdinaryFile) {
  const Probed probed = probe(h264Mp4());
  EXPECT_EQ(probed.result, 0U);
  const videoObject_st& record = probed.record;
  EXPECT_EQ(record.duration, 1);
  EXPECT_EQ(record.width, 176);
  EXPECT_EQ(record.height, 144);
  EXPECT_EQ(record.videoCodec, CODEC_ID_H264);
  EXPECT_EQ(record.videoProfile, PROFILE_H264_HIGH);
  EXPECT_GT(record.videoLevel, 0);
  EXPECT_GT(record.videoBitRate, 0U);
  EXPECT_DOUBLE_EQ(record.frameRate, 25.0);
  EXPECT_EQ(record.audioCodec, CODEC_ID_AAC);
  EXPECT_EQ(record.audioProfile, PROFILE_AAC_LOW);
  EXPECT_EQ(record.audioClass, 8U);
  EXPECT_EQ(record.audioLevel, -99);
  EXPECT_GT(record.audioBitRate, 0U);
  EXPECT_EQ(record.sampleRate, 44100U);
  EXPECT_EQ(record.channels, 2U);
  EXPECT_EQ(record.bitsPerSample, 16U);
  EXPECT_EQ(record.containerFormat, static_cast<unsigned>(MPEG4_ISOM << 16 | FORMAT_MPEG4));
  EXPECT_GT(record.bitRate, record.videoBitRate);
  EXPECT_EQ(record.subtitleCount, 0U);
  EXPECT_EQ(record.orientation, 0U);
  EXPECT_EQ(record.is360, 0U);
}

TEST(VideoProbe, KeepsTheCallersValuesIfNothingIsFound) {
  // Raw MPEG-1 video: no audio, no duration, no dates, no rotation.
  const std::string path =
      media("video.m1v", kVideoArguments + "-c:v mpeg1video -b:v 400k -f mpeg1video");
  const Probed probed = probe(path, patternRecord());
  ASSERT_EQ(probed.result, 0U);
  const videoObject_st& record = probed.record;
  EXPECT_STREQ(record.yearMonth, "");
  EXPECT_STREQ(record.creationDate, "");
  EXPECT_EQ(record.creationYear, 0);
  EXPECT_STREQ(record.mimeType, "video/mpeg");
  EXPECT_STREQ(record.dlnaProfile, "");
  EXPECT_EQ(record.width, 176);
  EXPECT_EQ(record.height, 144);
  EXPECT_EQ(record.sampleRate, kPatternUnsigned);
  EXPECT_EQ(record.bitsPerSample, kPatternUnsigned);
  EXPECT_EQ(record.channels, kPatternUnsigned);
  EXPECT_EQ(record.playException, kPatternUnsigned);
  EXPECT_EQ(record.containerFormat, static_cast<unsigned>(FORMAT_UNKNOWN));
  EXPECT_EQ(record.videoCodec, CODEC_ID_MPEG1VIDEO);
  EXPECT_EQ(record.audioCodec, kPatternInt);
  EXPECT_EQ(record.audioProfile, kPatternInt);
  EXPECT_EQ(record.audioClass, 0U);
  EXPECT_EQ(record.audioLevel, kPatternInt);
  EXPECT_EQ(record.audioBitRate, kPatternUnsigned);
  EXPECT_EQ(record.creationTime, kPatternLong);
  EXPECT_EQ(record.orientation, kPatternUnsigned);
  EXPECT_EQ(record.subtitleCount, 0U);
  EXPECT_EQ(record.is360, kPatternUnsigned);
  EXPECT_STREQ(record.contentIdentifier, "");
}

TEST(VideoProbe, ReportsTheContainerByItsDemuxer) {
  struct Row {
    const char* name;
    const char* arguments;
    unsigned format;
    const char* mimeType;
  };
  const Row rows[] = {
      {"container.avi", "-c:v mpeg4 -c:a libmp3lame", FORMAT_AVI, "video/x-msvideo"},
      {"container.mkv", "-c:v libx264 -c:a aac", FORMAT_MKV, "video/x-matroska"},
      {"container.webm", "-c:v libvpx -c:a libvorbis", FORMAT_MKV, "video/x-matroska"},
      {"container.flv", "-c:v flv1 -c:a libmp3lame", FORMAT_FLV, "video/x-flv"},
      {"container.wmv", "-c:v wmv2 -c:a wmav2", FORMAT_ASF, "video/x-ms-wmv"},
      {"container.ts", "-c:v mpeg2video -c:a mp2 -f mpegts", FORMAT_TS, "video/mpeg"},
      {"container.mpg", "-c:v mpeg2video -c:a mp2 -f vob", FORMAT_MPEG, "video/mpeg"},
      {"container.rm", "-c:v rv20 -c:a ac3", FORMAT_RM, ""},
      {"container.nut", "-c:v mpeg4 -c:a libmp3lame", FORMAT_UNKNOWN, ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const Probed probed = probe(media(row.name, kAudioVideoArguments + row.arguments));
    EXPECT_EQ(probed.result, 0U);
    EXPECT_EQ(probed.record.containerFormat, row.format);
    EXPECT_STREQ(probed.record.mimeType, row.mimeType);
    EXPECT_EQ(probed.record.width, 176);
    EXPECT_EQ(probed.record.height, 144);
  }
}

TEST(VideoProbe, NamesNoDlnaProfileIfTheContainerSetsTheMimeType) {
  // In a transport stream the same streams have a name.
  const Probed probed =
      probe(media("mpeg2-ac3.mkv", kAudioVideoArguments + "-c:v mpeg2video -c:a ac3"));
  EXPECT_STREQ(probed.record.mimeType, "video/x-matroska");
  EXPECT_STREQ(probed.record.dlnaProfile, "");
}

TEST(VideoProbe, ReportsMpeg4BrandAndLayout) {
  struct Row {
    const char* name;
    const char* arguments;
    unsigned brand;
  };
  const Row rows[] = {
      {"plain.mp4", "-c:v libx264 -c:a aac -brand mp42", MPEG4_MP4},
      {"faststart.mp4", "-c:v libx264 -c:a aac -brand mp42 -movflags +faststart",
       MPEG4_MP4_FASTSTART},
      {"plain.mov", "-c:v libx264 -c:a aac", MPEG4_MOV},
      {"faststart.mov", "-c:v libx264 -c:a aac -movflags +faststart", MPEG4_MOV_FASTSTART},
      {"apple.m4v", "-c:v libx264 -c:a aac -f ipod", MPEG4_M4V},
      {"phone.3gp", "-c:v libx264 -c:a aac", MPEG4_3GP},
      {"phone.3g2", "-c:v libx264 -c:a aac", MPEG4_3G2},
      {"portable.mp4", "-c:v libx264 -c:a aac -brand MSNV", MPEG4_MSNV},
      {"other.mp4", "-c:v libx264 -c:a aac -brand dash", 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const Probed probed = probe(media(row.name, kAudioVideoArguments + row.arguments));
    EXPECT_EQ(probed.result, 0U);
    EXPECT_EQ(probed.record.containerFormat, row.brand << 16 | FORMAT_MPEG4);
  }
}

TEST(VideoProbe, RecognisesQuickTimeByExtensionInAnyCase) {
  const TempDir folder;
  for (const char* name : {"movie.mov", "movie.MOV", "movie.MoV", ".mov"}) {
    SCOPED_TRACE(name);
    std::filesystem::create_symlink(h264Mp4(), folder.path(name));
    const Probed probed = probe(folder.path(name));
    EXPECT_STREQ(probed.record.mimeType, "video/quicktime");
    EXPECT_STREQ(probed.record.dlnaProfile, "");
  }
  std::filesystem::create_symlink(h264Mp4(), folder.path("movie.mp4"));
  EXPECT_STREQ(probe(folder.path("movie.mp4")).record.mimeType, "video/mp4");
}

TEST(VideoProbe, ReadsTheContentIdentifierOfMovFilesOnly) {
  const std::string arguments = kVideoArguments +
                                "-c:v libx264 -movflags use_metadata_tags -metadata "
                                "com.apple.quicktime.content.identifier=" +
                                std::string(100, 'A');
  const Probed mov = probe(media("identifier.mov", arguments));
  EXPECT_EQ(std::string(mov.record.contentIdentifier), std::string(63, 'A'));
  const Probed mp4 = probe(media("identifier.mp4", arguments));
  EXPECT_STREQ(mp4.record.contentIdentifier, "");
}

TEST(VideoProbe, MarksDivxFamilyTagsInAvi) {
  struct Row {
    const char* name;
    const char* arguments;
    unsigned expected;
  };
  const Row rows[] = {
      {"xvid.avi", "-c:v mpeg4 -vtag XVID", PLAY_EXCEPTION_DIVX_XVID},
      {"xvid-lower.avi", "-c:v mpeg4 -vtag xvid", PLAY_EXCEPTION_DIVX_XVID},
      {"dx50.avi", "-c:v mpeg4 -vtag DX50", PLAY_EXCEPTION_DIVX_DX50},
      {"divx.avi", "-c:v mpeg4 -vtag DIVX", PLAY_EXCEPTION_DIVX_DIVX},
      {"fmp4.avi", "-c:v mpeg4 -vtag FMP4", kPatternUnsigned},
      {"mjpeg.avi", "-c:v mjpeg -pix_fmt yuvj420p", kPatternUnsigned},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const Probed probed = probe(media(row.name, kVideoArguments + row.arguments), patternRecord());
    EXPECT_EQ(probed.result, 0U);
    EXPECT_EQ(probed.record.playException, row.expected);
  }
}

// Release 57 reported such a stream as one without a codec.
TEST(VideoProbe, ReportsCodecZeroForCodecsAfterRelease57) {
  const std::string path =
      replaced(media("fmp4.avi", kVideoArguments + "-c:v mpeg4 -vtag FMP4"), "FMP4", "IMM4");
  ASSERT_EQ(ffprobe(path)["streams"][0]["codec_name"], "imm4");
  const Probed probed = probe(path, patternRecord());
  EXPECT_EQ(probed.result, 0U);
  EXPECT_EQ(probed.record.videoCodec, 0);
  EXPECT_EQ(probed.record.videoProfile, -99);
  EXPECT_EQ(probed.record.videoLevel, -99);
  EXPECT_GT(probed.record.width, 0);
}

TEST(VideoProbe, MarksH264TaggedAvc1OnTheNamingPath) {
  EXPECT_EQ(probe(h264Mp4(), patternRecord()).record.playException,
            static_cast<unsigned>(PLAY_EXCEPTION_H264_AVC1));
  const Probed ts =
      probe(media("h264.ts", kVideoArguments + "-c:v libx264 -f mpegts"), patternRecord());
  EXPECT_EQ(ts.record.playException, kPatternUnsigned);
  // QuickTime files already have their MIME type and are not named.
  const Probed mov = probe(media("h264.mov", kVideoArguments + "-c:v libx264"), patternRecord());
  EXPECT_EQ(mov.record.playException, kPatternUnsigned);
}

TEST(VideoProbe, KeepsTheCallersImageFormatForMpegOnly) {
  const std::string program =
      media("container.mpg", kAudioVideoArguments + "-c:v mpeg2video -c:a mp2 -f vob");
  const std::string transport =
      media("container.ts", kAudioVideoArguments + "-c:v mpeg2video -c:a mp2 -f mpegts");
  for (const unsigned format : {FORMAT_DVDISO, FORMAT_BDISO, FORMAT_DVDIFO, FORMAT_BDBDMV}) {
    SCOPED_TRACE(format);
    videoObject_st record = {};
    record.containerFormat = format;
    const bool isImage = format == FORMAT_DVDISO || format == FORMAT_BDISO;
    EXPECT_EQ(probe(program, record).record.containerFormat,
              isImage ? format : static_cast<unsigned>(FORMAT_MPEG));
    EXPECT_EQ(probe(transport, record).record.containerFormat, static_cast<unsigned>(FORMAT_TS));
  }
}

TEST(VideoProbe, ChoosesTheAudioStreamByItsIndexAmongAudioStreams) {
  const std::string path =
      media("two-audio.mkv",
            "-f lavfi -i testsrc=s=176x144:r=25:d=1 -f lavfi -i sine=d=1:r=44100 "
            "-f lavfi -i sine=d=1:r=48000 -map 0:v -map 1:a -map 2:a -pix_fmt yuv420p -c:v libx264 "
            "-c:a:0 ac3 -c:a:1 libmp3lame");
  EXPECT_EQ(probe(path, {}, 0).record.audioCodec, CODEC_ID_AC3);
  EXPECT_EQ(probe(path, {}, 0).record.sampleRate, 44100U);
  EXPECT_EQ(probe(path, {}, 1).record.audioCodec, CODEC_ID_MP3);
  EXPECT_EQ(probe(path, {}, 1).record.sampleRate, 48000U);
  for (const int missing : {2, 5, -1}) {
    SCOPED_TRACE(missing);
    EXPECT_EQ(probe(path, {}, missing).record.audioCodec, CODEC_ID_AC3);
  }
}

TEST(VideoProbe, ChoosesTheLargestVideoStreamInEitherOrder) {
  const std::string sources =
      "-f lavfi -i testsrc=s=320x240:d=1 -f lavfi -i testsrc=s=176x144:d=1 -pix_fmt yuv420p "
      "-c:v libx264 ";
  EXPECT_EQ(probe(media("large-first.mkv", sources + "-map 0 -map 1")).record.width, 320);
  EXPECT_EQ(probe(media("large-last.mkv", sources + "-map 1 -map 0")).record.width, 320);
}

TEST(VideoProbe, ChoosesTheEarlierVideoStreamOfEqualSize) {
  const Probed probed = probe(
      media("equal-size.mkv",
            "-f lavfi -i testsrc=s=176x144:d=1 -f lavfi -i testsrc=s=176x144:d=1 -map 0 -map 1 "
            "-pix_fmt yuv420p -c:v:0 mpeg4 -c:v:1 libx264"));
  EXPECT_EQ(probed.record.videoCodec, CODEC_ID_MPEG4);
}

TEST(VideoProbe, ConvertsMp4TrackMatrixToOrientation) {
  struct Row {
    int degrees;
    bool flipped;
    unsigned expected;
  };
  const Row rows[] = {
      {0, false, kPatternUnsigned},
      {90, false, 8U},
      {180, false, 3U},
      {270, false, 6U},
      {-90, false, 6U},
      {45, false, kPatternUnsigned},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.degrees);
    const std::string path = withTrackMatrix(h264Mp4(), rotationMatrix(row.degrees, row.flipped));
    EXPECT_EQ(probe(path, patternRecord()).record.orientation, row.expected);
  }
  // A picture mirrored left to right counts as turned by 180 degrees, because that is the angle of
  // its matrix.
  EXPECT_EQ(probe(withTrackMatrix(h264Mp4(), rotationMatrix(0, true)), patternRecord())
                .record.orientation,
            3U);
}

TEST(VideoProbe, AcceptsRealRotateTag) {
  struct Row {
    const char* value;
    unsigned expected;
  };
  const Row rows[] = {
      {"90", 8},
      {"180", 3},
      {"270", 6},
      {"90.5", 8},  // read up to the first non-digit
      {"-90", kPatternUnsigned},
      {"45", kPatternUnsigned},
      {"360", kPatternUnsigned},
      {"left", kPatternUnsigned},
      {"99999999999999999999", kPatternUnsigned},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.value);
    const std::string path = withRotateTag(row.value);
    EXPECT_EQ(probe(path, patternRecord()).record.orientation, row.expected);
  }
}

TEST(VideoProbe, ReadsTheStreamsCreationTime) {
  runInChild(
      [] {
        const Probed probed = probe(
            media("created.mp4",
                  kVideoArguments + "-c:v libx264 -metadata creation_time=2015-06-07T20:09:10Z"));
        EXPECT_EQ(probed.record.creationTime, 1433707750 + 9 * 3600);
        EXPECT_STREQ(probed.record.yearMonth, "2015-06");
        EXPECT_STREQ(probed.record.creationDate, "2015-06-08");
        EXPECT_EQ(probed.record.creationYear, 0);
      },
      {{"TZ", "Asia/Tokyo"}});
}

TEST(VideoProbe, PrefersQuickTimesCreationDate) {
  runInChild(
      [] {
        const LogRecorder log;
        const Probed probed =
            probe(media("created.mov",
                        kVideoArguments +
                            "-c:v libx264 -movflags use_metadata_tags "
                            "-metadata creation_time=2015-06-07T08:09:10Z "
                            "-metadata com.apple.quicktime.creationdate=2014-05-06T07:08:09+0200"));
        EXPECT_EQ(probed.record.creationTime, 1399360089 - 9 * 3600);
        EXPECT_EQ(probed.record.creationYear, 2014);
        EXPECT_STREQ(probed.record.yearMonth, "2014-05");
        EXPECT_STREQ(probed.record.creationDate, "2014-05-06");
        EXPECT_THAT(log.texts(),
                    testing::ElementsAre("@@GetDictEntry key:com.apple.quicktime.creationdate",
                                         "@@creation_time:2014-05-06T07:08:09+0200",
                                         "@@creation_time:1399327689"));
        EXPECT_EQ(log.messages().front().function, "GetDictEntry");
        EXPECT_EQ(log.messages().front().level, 5);
        EXPECT_EQ(log.messages().front().source, "MediaInfo");
      },
      {{"TZ", "Asia/Tokyo"}});
}

TEST(VideoProbe, LogsTheLookUpOfQuickTimesCreationDateForEveryFile) {
  const std::string path =
      media("container.avi", kAudioVideoArguments + "-c:v mpeg4 -c:a libmp3lame");
  const LogRecorder log;
  probe(path);
  EXPECT_THAT(log.texts(),
              testing::ElementsAre("@@GetDictEntry key:com.apple.quicktime.creationdate"));
}

TEST(VideoProbe, KeepsDurationAndAspectIfTheFileHasNone) {
  const std::string path =
      media("bare.h264", kVideoArguments + "-vf setsar=0 -c:v libx264 -f h264");
  const Probed probed = probe(path, patternRecord());
  ASSERT_EQ(probed.result, 0U);
  EXPECT_EQ(probed.record.duration, kPatternInt);
  EXPECT_EQ(probed.record.sampleAspectNum, kPatternInt);
  EXPECT_EQ(probed.record.sampleAspectDen, kPatternInt);
  EXPECT_EQ(probed.record.displayAspectNum, kPatternInt);
  EXPECT_EQ(probed.record.displayAspectDen, kPatternInt);
}

TEST(VideoProbe, WritesNoAspectToClearedRecord) {
  const std::string path = media(
      "anamorphic.mkv",
      "-f lavfi -i testsrc=s=720x576:r=25:d=0.2 -vf setsar=16/15 -pix_fmt yuv420p -c:v mpeg2video");
  const Probed probed = probe(path);
  EXPECT_EQ(probed.record.sampleAspectNum, 0);
  EXPECT_EQ(probed.record.sampleAspectDen, 0);
  EXPECT_EQ(probed.record.displayAspectNum, 0);
  EXPECT_EQ(probed.record.displayAspectDen, 0);
}

TEST(VideoProbe, WritesAspectToRecordThatAsksForIt) {
  const std::string path = media(
      "anamorphic.mkv",
      "-f lavfi -i testsrc=s=720x576:r=25:d=0.2 -vf setsar=16/15 -pix_fmt yuv420p -c:v mpeg2video");
  videoObject_st asking = {};
  asking.sampleAspectNum = asking.sampleAspectDen = 1;
  asking.displayAspectNum = asking.displayAspectDen = 1;
  const Probed probed = probe(path, asking);
  EXPECT_EQ(probed.record.sampleAspectNum, 16);
  EXPECT_EQ(probed.record.sampleAspectDen, 15);
  EXPECT_EQ(probed.record.displayAspectNum, 4);
  EXPECT_EQ(probed.record.displayAspectDen, 3);

  // All four must be non-zero.
  asking.displayAspectDen = 0;
  EXPECT_EQ(probe(path, asking).record.sampleAspectNum, 1);
}

TEST(VideoProbe, FindsEquirectangularVideo) {
  EXPECT_EQ(probe(withSphericalBox(h264Mp4())).record.is360, 1U);
  EXPECT_EQ(probe(withSphericalBox(h264Mp4(), "cbmp"), patternRecord()).record.is360,
            kPatternUnsigned)
      << "a cube map";
  EXPECT_EQ(probe(h264Mp4(), patternRecord()).record.is360, kPatternUnsigned);
}

TEST(VideoProbe, ProbesTheMainTitleOfDvdFolder) {
  const Probed probed = probe(dvdFolder() + "VIDEO_TS.IFO");
  EXPECT_EQ(probed.result, 0U);
  // The demuxer's format overwrites FORMAT_DVDIFO. Stored formats depend on it.
  EXPECT_EQ(probed.record.containerFormat, static_cast<unsigned>(FORMAT_MPEG));
  EXPECT_EQ(probed.record.videoCodec, CODEC_ID_MPEG2VIDEO);
  EXPECT_EQ(probed.record.width, 720);
  EXPECT_EQ(probed.record.height, 576);
  // The duration is scaled by the title's size in whole gibibytes, and this title is smaller than
  // one.
  EXPECT_EQ(probed.record.duration, 0);
}

// FFmpeg measures the first part file only.
TEST(VideoProbe, ScalesDvdDurationByTheTitlesSize) {
  EXPECT_EQ(probe(largeDvdFolder() + "VTS_02_1.VOB").record.duration, 2);
  EXPECT_EQ(probe(largeDvdFolder() + "VIDEO_TS.IFO").record.duration, 2 * 5420 / 1024);
}

TEST(VideoProbe, CountsSubtitlesOfDiscFoldersOnly) {
  EXPECT_EQ(probe(dvdFolder() + "VIDEO_TS.IFO", patternRecord()).record.subtitleCount, 1U);
  EXPECT_EQ(probe(dvdFolder() + "VTS_02_1.VOB", patternRecord()).record.subtitleCount, 0U);
}

TEST(VideoProbe, ProbesTheLargestStreamFileOfBlurayFolder) {
  const Probed probed = probe(blurayFolder() + "index.bdmv");
  EXPECT_EQ(probed.result, 0U);
  EXPECT_EQ(probed.record.containerFormat, static_cast<unsigned>(FORMAT_TS));
  EXPECT_GT(probed.record.width, 0);
}

TEST(VideoProbe, ProbesLowerCaseIndexNamesAsOrdinaryFiles) {
  const TempDir folder;
  std::filesystem::create_symlink(h264Mp4(), folder.path("video_ts.ifo"));
  EXPECT_EQ(probe(folder.path("video_ts.ifo")).record.videoCodec, CODEC_ID_H264);
}

TEST(VideoProbe, FailsForDiscFolderWithoutTitle) {
  const TempDir folder;
  folder.write("VIDEO_TS.IFO", "no DVD");
  folder.write("index.bdmv", "no Blu-ray");
  for (const char* name : {"VIDEO_TS.IFO", "index.bdmv"}) {
    const Probed probed = probe(folder.path(name), patternRecord());
    EXPECT_EQ(probed.result, 1U) << name;
    expectOnlyTextsCleared(probed.record);
  }
}

TEST(VideoProbe, RecognisesDiscImagesWithoutProbingThem) {
  if (const auto why = loopMountUnavailable()) GTEST_SKIP() << *why;
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  const TempDir none;
  none.write("content/readme.txt", "neither");
  const std::string dvd = discImage(discRoot(dvdFolder()), "dvd.iso");
  struct Row {
    std::string image;
    unsigned result;
    unsigned format;
  };
  const Row rows[] = {
      {dvd, 0, FORMAT_DVDISO},
      {discImage(discRoot(dvdFolder()), "DVD.ISO"), 0, FORMAT_DVDISO},
      {discImage(discRoot(blurayFolder()), "bluray.iso"), 0, FORMAT_BDISO},
      {discImage(none.path("content"), "neither.iso"), 1, kPatternUnsigned},
  };
  runInAppliance([&] {
    const TempDir broken;
    for (const Row& row : rows) {
      SCOPED_TRACE(row.image);
      const Probed probed = probe(row.image, patternRecord());
      EXPECT_EQ(probed.result, row.result);
      EXPECT_EQ(probed.record.containerFormat, row.format);
      videoObject_st rest = probed.record;
      rest.containerFormat = kPatternUnsigned;
      expectOnlyTextsCleared(rest);
    }
    const Probed probed = probe(broken.write("broken.ISO", "no file system"), patternRecord());
    EXPECT_EQ(probed.result, 1U);
    expectOnlyTextsCleared(probed.record);
    for (const auto& entry : std::filesystem::directory_iterator("/tmp"))
      EXPECT_FALSE(entry.path().filename().string().starts_with("Media_mount_")) << entry.path();
  });
}

TEST(VideoProbe, FailsForNonMedia) {
  const TempDir folder;
  ASSERT_EQ(mkfifo(folder.path("pipe.mp4").c_str(), 0600), 0);
  std::filesystem::create_directory(folder.path("folder.mp4"));
  const std::string truncated = [] {
    std::ifstream in(h264Mp4(), std::ios::binary);
    std::string head(200, '\0');
    in.read(head.data(), 200);
    return head;
  }();
  const std::string paths[] = {
      folder.path("missing.mp4"),
      folder.path("pipe.mp4"),
      folder.path("folder.mp4"),
      folder.write("empty.mp4", ""),
      folder.write("text.mp4", "This is no video.\n"),
      folder.write("truncated.mp4", truncated),
      folder.folder() + std::string(100'000, 'x') + ".mp4",
      "/",
      "/dev/zero",
  };
  for (const std::string& path : paths) {
    SCOPED_TRACE(path.substr(0, 100));
    Probed probed;
    withinSeconds(20, [&] { probed = probe(path, patternRecord()); });
    EXPECT_EQ(probed.result, 1U);
    expectOnlyTextsCleared(probed.record);
  }
}

TEST(VideoProbe, FailsForUnreadableFile) {
  const TempDir folder;
  std::filesystem::copy(h264Mp4(), folder.path("secret.mp4"));
  std::filesystem::permissions(folder.folder(), std::filesystem::perms::all);
  std::filesystem::permissions(folder.path("secret.mp4"), std::filesystem::perms::none);
  runInChild(
      [&] {
        if (geteuid() == 0) {
          ASSERT_EQ(setuid(65534), 0);
        }
        EXPECT_EQ(probe(folder.path("secret.mp4")).result, 1U);
      },
      {});
}

TEST(VideoProbe, FailsForFileWithoutVideoAndSaysSo) {
  const std::string path = media("song.m4a", "-f lavfi -i sine=d=1:r=44100 -c:a aac -ac 2");
  LogRecorder log;
  const Probed probed = probe(path, patternRecord());
  EXPECT_EQ(probed.result, 1U);
  EXPECT_EQ(probed.record.audioCodec, CODEC_ID_AAC) << "filled before the failure";
  EXPECT_EQ(probed.record.width, kPatternInt);
  ASSERT_EQ(log.messages().size(), 1U);
  EXPECT_EQ(log.messages()[0].text, "video_stream less than 0");
  EXPECT_EQ(log.messages()[0].function, "parseVideoTrack");
  EXPECT_EQ(log.messages()[0].source, "MediaInfo");
  EXPECT_EQ(log.messages()[0].level, 5);
}

TEST(VideoProbe, FailsForUnknownVideoCodecAndKeepsEarlierResults) {
  // FFmpeg knows this codec, but the library has no number for it.
  const Probed probed =
      probe(media("ffv1.mkv", kAudioVideoArguments + "-c:v cfhd -pix_fmt yuv422p10 "
                                                     "-c:a libmp3lame"),
            patternRecord());
  EXPECT_EQ(probed.result, 1U);
  EXPECT_EQ(probed.record.videoCodec, -1);
  EXPECT_EQ(probed.record.containerFormat, static_cast<unsigned>(FORMAT_MKV));
  EXPECT_EQ(probed.record.audioCodec, CODEC_ID_MP3);
  EXPECT_EQ(probed.record.duration, 1);
  EXPECT_EQ(probed.record.width, kPatternInt);
  EXPECT_EQ(probed.record.videoProfile, kPatternInt);
}

TEST(VideoProbe, KeepsTheAudioFieldsForUnknownAudioCodec) {
  const Probed probed =
      probe(media("opus.mkv", kAudioVideoArguments + "-c:v libx264 -c:a libopus -ar 48000"),
            patternRecord());
  EXPECT_EQ(probed.result, 0U);
  EXPECT_EQ(probed.record.audioClass, 0U);
  EXPECT_EQ(probed.record.audioCodec, kPatternInt);
  EXPECT_EQ(probed.record.sampleRate, kPatternUnsigned);
  EXPECT_EQ(probed.record.audioBitRate, kPatternUnsigned);
}

TEST(VideoProbe, RejectsNullArguments) {
  videoObject_st record = patternRecord();
  EXPECT_EQ(GetVideoMetadata1(nullptr, "a.mp4", &record, 0), 1U);
  EXPECT_EQ(GetVideoMetadata1("/", nullptr, &record, 0), 1U);
  EXPECT_EQ(GetVideoMetadata1("/", "a.mp4", static_cast<videoObject_st*>(nullptr), 0), 1U);
  const videoObject_st untouched = patternRecord();
  EXPECT_EQ(std::memcmp(&record, &untouched, sizeof record), 0);
}

TEST(VideoProbe, TreatsNamesAsBytes) {
  const TempDir folder;
  for (const char* name : {"\xFF\xFE.mp4", "new\nline.mp4", "100%d.mp4", "http:x.mp4", "-x.mp4"}) {
    SCOPED_TRACE(name);
    std::filesystem::create_symlink(h264Mp4(), folder.path(name));
    EXPECT_EQ(probe(folder.path(name)).result, 0U);
  }
}

TEST(VideoProbe, TreatsRelativeNamesThatLookLikeUrlsAsFiles) {
  const TempDir folder;
  std::filesystem::create_symlink(h264Mp4(), folder.path("http:x.mp4"));
  runInChild(
      [&] {
        ASSERT_EQ(chdir(folder.folder().c_str()), 0);
        videoObject_st record = {};
        EXPECT_EQ(GetVideoMetadata1("", "http:x.mp4", &record, 0), 0U);
      },
      {});
}

TEST(VideoProbe, LeavesNoDescriptorOpen) {
  const TempDir folder;
  const std::string paths[] = {h264Mp4(),
                               folder.path("missing.mp4"),
                               folder.write("text.mp4", "no video"),
                               dvdFolder() + "VIDEO_TS.IFO",
                               blurayFolder() + "index.bdmv",
                               media("song.m4a", "-f lavfi -i sine=d=1:r=44100 -c:a aac -ac 2")};
  const int before = openDescriptorCount();
  for (const std::string& path : paths) probe(path);
  EXPECT_EQ(openDescriptorCount(), before);
}

}  // namespace
