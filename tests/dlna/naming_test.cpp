// The DLNA naming decision: facts in, names out. Every limit is tested at its value and one beyond.
#include "dlna/naming.h"
#include "media/container.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kolum/identifiers.h>

#include <algorithm>
#include <array>
#include <climits>
#include <string>
#include <vector>

namespace kolum::dlna {

namespace {

constexpr TransportPackets kPackets188 = {188, false};
constexpr TransportPackets kPackets192 = {192, false};
constexpr TransportPackets kStamped192 = {192, true};
// The result for a file that cannot be read.
constexpr TransportPackets kUnreadable = {0, true};
constexpr TransportPackets kNoPackets = {0, false};

constexpr const char* kTs = "mpegts";
constexpr const char* kPs = "mpeg";
constexpr const char* kMp4 = "mov,mp4,m4a,3gp,3g2,mj2";
constexpr const char* kTts = "video/vnd.dlna.mpeg-tts";

// Asking for an explanation must not change the name, and the chosen candidate must explain the
// name.
void expectTheSameWhenExplained(const DlnaFacts& facts, TransportPackets packets,
                                const DlnaName& expected) {
  DlnaExplanation explanation;
  const DlnaName explained = nameDlnaProfile(
      facts, [packets] { return packets; }, &explanation);
  EXPECT_EQ(explained.profile, expected.profile);
  EXPECT_EQ(explained.mimeType, expected.mimeType);
  EXPECT_EQ(explained.playException, expected.playException);
  const auto& candidates = explanation.candidates;
  const bool isExplained =
      std::any_of(candidates.begin(), candidates.end(), [&](const DlnaCandidate& candidate) {
        return candidate.taken && expected.profile.starts_with(candidate.name);
      });
  // Names that are only a fragment have a remark instead.
  EXPECT_TRUE(isExplained || expected.profile.empty() || !explanation.remarks.empty());
  EXPECT_FALSE(candidates.empty() && explanation.remarks.empty());
}

DlnaName name(const DlnaFacts& facts, TransportPackets packets = kPackets188) {
  testing::internal::CaptureStdout();
  DlnaName result = nameDlnaProfile(facts, [packets] { return packets; });
  expectTheSameWhenExplained(facts, packets, result);
  testing::internal::GetCapturedStdout();
  return result;
}

std::string profile(const DlnaFacts& facts, TransportPackets packets = kPackets188) {
  return name(facts, packets).profile;
}

// --- MPEG-2

DlnaFacts mpeg2(int width, int height, media::Rational rate = {25, 1}, unsigned audioClass = 2) {
  DlnaFacts facts;
  facts.codec = CODEC_ID_MPEG2VIDEO;
  facts.demuxer = kTs;
  facts.width = width;
  facts.height = height;
  facts.realFrameRate = rate;
  facts.timeBaseDen = 90000;
  facts.audioClass = audioClass;
  return facts;
}

constexpr media::Rational kNtscRate = {30000, 1001};
constexpr media::Rational kNtscDoubleRate = {60000, 1001};

TEST(DlnaMpeg2, IsNamedBySizeRateAndPacketsInTransportStreams) {
  struct Row {
    int width;
    int height;
    media::Rational rate;
    TransportPackets packets;
    const char* expected;
  };
  const Row rows[] = {
      {1920, 1080, kNtscRate, kStamped192, "MPEG_TS_HD_NA_T,MPEG_TS_HD_KO_T"},
      {1920, 1080, kNtscRate, kPackets192, "MPEG_TS_HD_NA,MPEG_TS_HD_KO"},
      {1920, 1080, kNtscRate, kPackets188, "MPEG_TS_HD_NA_ISO,MPEG_TS_HD_KO_ISO"},
      {1920, 1080, {29, 1}, kPackets188, "MPEG_TS_HD_NA_ISO,MPEG_TS_HD_KO_ISO"},
      {1920, 1080, {28999, 1000}, kPackets188, "MPEG_TS_HD_NA_ISO"},
      {1920, 1080, {25, 1}, kPackets188, "MPEG_TS_HD_NA_ISO"},
      {1920, 1088, kNtscRate, kPackets188, "MPEG_TS_HD_NA_ISO"},
      {1280, 720, {50, 1}, kPackets188, "MPEG_TS_HD_NA_ISO"},
      {1280, 720, {50, 1}, kStamped192, "MPEG_TS_HD_NA_T"},
      {1280, 720, {50, 1}, kPackets192, "MPEG_TS_HD_NA"},
      {1280, 720, kNtscDoubleRate, kPackets188, "MPEG_TS_HD_NA_ISO,MPEG_TS_HD_KO_ISO"},
      {1280, 720, {58999, 1000}, kPackets188, "MPEG_TS_HD_NA_ISO"},
      {1280, 720, {59, 1}, kPackets188, "MPEG_TS_HD_NA_ISO,MPEG_TS_HD_KO_ISO"},
      {1279, 720, {50, 1}, kPackets188, "MPEG_TS_SD_NA_ISO"},
      {1280, 719, {50, 1}, kPackets188, "MPEG_TS_SD_NA_ISO"},
      {720, 576, {25, 1}, kPackets188, "MPEG_TS_SD_EU_ISO"},
      {720, 576, {25, 1}, kStamped192, "MPEG_TS_SD_EU_T"},
      {352, 288, {25, 1}, kPackets188, "MPEG_TS_SD_EU_ISO"},
      {720, 575, {25, 1}, kPackets188, "MPEG_TS_SD_NA_ISO"},
      {720, 480, kNtscRate, kPackets188, "MPEG_TS_SD_NA_ISO"},
      {640, 480, kNtscRate, kPackets188, "MPEG_TS_SD_NA_ISO,MPEG_TS_SD_KO_ISO"},
      {704, 480, kNtscRate, kStamped192, "MPEG_TS_SD_NA_T,MPEG_TS_SD_KO_T"},
      {704, 480, kNtscRate, kPackets192, "MPEG_TS_SD_NA,MPEG_TS_SD_KO"},
      {641, 480, kNtscRate, kPackets188, "MPEG_TS_SD_NA_ISO"},
      {640, 481, kNtscRate, kPackets188, "MPEG_TS_SD_NA_ISO"},
      {1920, 1080, {30, 0}, kPackets188, "MPEG_TS_HD_NA_ISO"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << row.width << "x" << row.height << " at " << row.rate.num
                                    << "/" << row.rate.den << ", " << row.packets.size);
    const DlnaName named = name(mpeg2(row.width, row.height, row.rate), row.packets);
    EXPECT_EQ(named.profile, row.expected);
    EXPECT_EQ(named.mimeType, row.packets.size == 192 ? kTts : "video/mpeg");
  }
}

// With packets of unknown size the name is only the suffix; renderers match by its beginning.
TEST(DlnaMpeg2, KeepsOnlyTheSuffixForUnknownPackets) {
  EXPECT_EQ(profile(mpeg2(720, 576), kNoPackets), "_ISO");
  EXPECT_EQ(profile(mpeg2(720, 576), kUnreadable), "_ISO");
  EXPECT_EQ(profile(mpeg2(640, 480), kNoPackets), "_ISO,MPEG_TS_SD_KO_ISO");
  EXPECT_EQ(name(mpeg2(720, 576), kNoPackets).mimeType, "video/mpeg");
}

TEST(DlnaMpeg2, IsJapaneseWithAacThatFitsNoClass) {
  for (const TransportPackets packets : {kPackets188, kStamped192, kNoPackets}) {
    EXPECT_EQ(profile(mpeg2(1920, 1080, kNtscRate, 0x15002), packets), "MPEG_TS_JP_T");
    EXPECT_EQ(name(mpeg2(1920, 1080, kNtscRate, 0x15002), packets).mimeType, "");
  }
  EXPECT_EQ(profile(mpeg2(720, 576, {25, 1}, 8)), "MPEG_TS_SD_EU_ISO");
}

TEST(DlnaMpeg2, IsNamedByHeightInProgramStreams) {
  for (const auto& [height, expected] :
       {std::pair(576, "MPEG_PS_PAL"), std::pair(288, "MPEG_PS_PAL"),
        std::pair(480, "MPEG_PS_NTSC"), std::pair(577, "MPEG_PS_NTSC")}) {
    DlnaFacts facts = mpeg2(720, height);
    facts.demuxer = kPs;
    EXPECT_EQ(profile(facts), expected) << height;
    EXPECT_EQ(name(facts).mimeType, "video/mpeg");
  }
}

TEST(DlnaMpeg2, HasNoNameElsewhere) {
  for (const char* demuxer : {"mpegvideo", kMp4, "asf", "wtv", "mxf", "gxf", "pva", "nut"}) {
    DlnaFacts facts = mpeg2(720, 576);
    facts.demuxer = demuxer;
    EXPECT_EQ(profile(facts), "") << demuxer;
    EXPECT_EQ(name(facts).mimeType, "") << demuxer;
  }
}

TEST(DlnaMsMpeg4, HasMimeTypeButNoName) {
  DlnaFacts facts = mpeg2(720, 576);
  facts.codec = CODEC_ID_MSMPEG4V3;
  facts.demuxer = "asf";
  EXPECT_EQ(profile(facts), "");
  EXPECT_EQ(name(facts).mimeType, "video/x-msvideo");
}

// --- H.264 in MP4

constexpr std::uint32_t tag(const char (&text)[5]) {
  return static_cast<std::uint32_t>(text[0]) | static_cast<std::uint32_t>(text[1]) << 8 |
         static_cast<std::uint32_t>(text[2]) << 16 | static_cast<std::uint32_t>(text[3]) << 24;
}

DlnaFacts h264(int ffmpegProfile, int width, int height, std::int64_t streamBitRate,
               unsigned audioClass) {
  DlnaFacts facts;
  facts.codec = CODEC_ID_H264;
  facts.demuxer = kMp4;
  facts.profile = ffmpegProfile;
  facts.level = 30;
  facts.width = width;
  facts.height = height;
  facts.streamBitRate = streamBitRate;
  facts.containerBitRate = streamBitRate;
  facts.audioClass = audioClass;
  facts.realFrameRate = {25, 1};
  facts.timeBaseDen = 90000;
  return facts;
}

TEST(DlnaH264Mp4, NamesHighProfileOrKeepsTheFragment) {
  struct Row {
    int width;
    int height;
    std::int64_t rate;
    unsigned audioClass;
    bool named;
  };
  const Row rows[] = {
      {1920, 1080, 25000000, 8, true},  {1, 1, 0, 8, true},
      {1921, 1080, 25000000, 8, false}, {1920, 1081, 25000000, 8, false},
      {1920, 1080, 25000001, 8, false}, {1920, 1080, 25000000, 9, false},
      {3840, 2160, 8000000, 8, false},  {1920, 1080, 25000000, 2, false},
  };
  for (const Row& row : rows)
    EXPECT_EQ(profile(h264(100, row.width, row.height, row.rate, row.audioClass)),
              row.named ? "AVC_MP4_HP_HD_AAC" : "AVC_MP4_")
        << row.width << "x" << row.height << ", " << row.rate << ", " << row.audioClass;
}

TEST(DlnaH264Mp4, NamesMainProfile) {
  struct Row {
    int width;
    int height;
    std::int64_t rate;
    unsigned audioClass;
    const char* expected;
  };
  const Row rows[] = {
      {720, 576, 10000000, 2, "AVC_MP4_MP_SD_AC3"},
      {720, 576, 10000000, 8, "AVC_MP4_MP_SD_AAC_MULT5"},
      {720, 576, 10000000, 9, "AVC_MP4_MP_SD_AAC_MULT5"},
      {720, 576, 10000000, 1, "AVC_MP4_MP_SD_MPEG1_L3"},
      {720, 576, 10000000, 0, "AVC_MP4_MP_SD"},
      {720, 576, 10000000, 10, "AVC_MP4_MP_SD"},
      {720, 576, 10000000, 0x15002, "AVC_MP4_MP_SD"},
      {720, 576, 10000001, 8, "AVC_MP4_MP_HD_720p_AAC"},
      {720, 576, 10000001, 2, ""},
      {721, 576, 10000000, 8, "AVC_MP4_MP_HD_720p_AAC"},
      {720, 577, 10000000, 8, "AVC_MP4_MP_HD_720p_AAC"},
      {1280, 720, 15000000, 8, "AVC_MP4_MP_HD_720p_AAC"},
      {1280, 720, 8000000, 8, "AVC_MP4_MP_HD_720p_AAC"},
      {1280, 720, 8000000, 2, ""},
      {1280, 720, 8000000, 9, ""},
      // The rate is too high for 720p, so the next size names it.
      {1280, 720, 15000001, 8, "AVC_MP4_MP_HD_1080i_AAC"},
      {1280, 720, 21000000, 8, "AVC_MP4_MP_HD_1080i_AAC"},
      {1280, 720, 21000001, 8, ""},
      {1280, 721, 15000000, 8, "AVC_MP4_MP_HD_1080i_AAC"},
      {1281, 720, 15000000, 8, "AVC_MP4_MP_HD_1080i_AAC"},
      {1920, 1080, 21000000, 8, "AVC_MP4_MP_HD_1080i_AAC"},
      {1920, 1080, 21000001, 8, ""},
      {1920, 1081, 21000000, 8, ""},
      {1920, 1080, 21000000, 2, ""},
      {1921, 1080, 1000000, 8, ""},
  };
  for (const Row& row : rows)
    EXPECT_EQ(profile(h264(77, row.width, row.height, row.rate, row.audioClass)), row.expected)
        << row.width << "x" << row.height << ", " << row.rate << ", " << row.audioClass;
}

TEST(DlnaH264Mp4, NamesBaselineByContainerRateLevelAndAudio) {
  struct Row {
    int width;
    int height;
    int level;
    std::int64_t containerRate;
    unsigned audioClass;
    const char* expected;
  };
  const Row rows[] = {
      // Up to 352 x 288.
      {320, 240, 13, 500000, 8, "AVC_MP4_BL_CIF15_AAC_520"},
      {352, 288, 13, 519999, 8, "AVC_MP4_BL_CIF15_AAC_520"},
      {352, 288, 13, 520000, 8, "AVC_MP4_BL_CIF15_AAC_940"},
      {352, 288, 13, 599999, 8, "AVC_MP4_BL_CIF15_AAC_940"},
      {352, 288, 13, 600000, 8, "AVC_MP4_BL_CIF30_AAC_940"},
      {352, 288, 13, 939999, 8, "AVC_MP4_BL_CIF30_AAC_940"},
      {352, 288, 13, 940000, 8, "AVC_MP4_MP_SD_AAC_MULT5"},
      {352, 288, 13, 4999999, 10, "AVC_MP4_BL_CIF30_AMR"},
      {352, 288, 13, 5000000, 10, "AVC_MP4_MP_SD"},
      {352, 288, 13, 599999, 10, "AVC_MP4_BL_CIF15_AMR"},
      {352, 288, 13, 600000, 10, "AVC_MP4_BL_CIF30_AMR"},
      {352, 288, 13, 500000, 2, "AVC_MP4_MP_SD_AC3"},
      {352, 288, 13, 500000, 9, "AVC_MP4_MP_SD_AAC_MULT5"},
      {352, 288, 13, 0, 8, "AVC_MP4_BL_CIF15_AAC_520"},
      // Up to 720 x 576.
      {353, 288, 30, 5000000, 8, "AVC_MP4_BL_L3L_SD_AAC"},
      {352, 289, 30, 5000000, 8, "AVC_MP4_BL_L3L_SD_AAC"},
      {720, 576, 30, 5000000, 8, "AVC_MP4_BL_L3L_SD_AAC"},
      {720, 576, 30, 5000001, 8, "AVC_MP4_BL_L31_HD_AAC"},
      {720, 576, 29, 5000000, 8, "AVC_MP4_BL_L31_HD_AAC"},
      {720, 576, 31, 15000000, 8, "AVC_MP4_BL_L31_HD_AAC"},
      {720, 576, 31, 5000000, 8, "AVC_MP4_BL_L31_HD_AAC"},
      {720, 576, -99, 15000000, 8, "AVC_MP4_BL_L31_HD_AAC"},
      {720, 576, 31, 15000001, 8, "AVC_MP4_MP_HD_1080i_AAC"},
      {720, 576, 32, 9000000, 8, "AVC_MP4_MP_SD_AAC_MULT5"},
      {720, 576, 30, 5000000, 9, "AVC_MP4_MP_SD_AAC_MULT5"},
      {720, 576, 30, 5000000, 10, "AVC_MP4_MP_SD"},
      // Up to 1280 x 720.
      {721, 576, 31, 15000000, 8, "AVC_MP4_BL_L31_HD_AAC"},
      {720, 577, 31, 15000000, 8, "AVC_MP4_BL_L31_HD_AAC"},
      {721, 576, 32, 15000000, 8, "AVC_MP4_BL_L32_HD_AAC"},
      {720, 577, 32, 15000000, 8, "AVC_MP4_BL_L32_HD_AAC"},
      {1280, 720, 31, 15000000, 8, "AVC_MP4_BL_L31_HD_AAC"},
      {1280, 720, 31, 15000001, 8, "AVC_MP4_BL_L32_HD_AAC"},
      {1280, 720, 32, 15000000, 8, "AVC_MP4_BL_L32_HD_AAC"},
      {1280, 720, 32, 21000000, 8, "AVC_MP4_BL_L32_HD_AAC"},
      {1280, 720, 32, 21000001, 8, ""},
      {1280, 720, 33, 10000000, 8, "AVC_MP4_MP_HD_720p_AAC"},
      {1280, 721, 31, 10000000, 8, "AVC_MP4_MP_HD_1080i_AAC"},
      {1280, 720, 31, 10000000, 2, ""},
      // Wider.
      {1281, 720, 31, 10000000, 8, "AVC_MP4_MP_HD_1080i_AAC"},
  };
  for (const int baseline : {66, 578}) {
    for (const Row& row : rows) {
      DlnaFacts facts = h264(baseline, row.width, row.height, row.containerRate, row.audioClass);
      facts.level = row.level;
      EXPECT_EQ(profile(facts), row.expected)
          << row.width << "x" << row.height << ", level " << row.level << ", " << row.containerRate
          << ", " << row.audioClass;
    }
  }
}

TEST(DlnaH264Mp4, NamesBaselineByTheContainersRateAndMainByTheStreams) {
  DlnaFacts facts = h264(66, 352, 288, 100, 8);
  facts.containerBitRate = 5000000;
  facts.streamBitRate = 10000001;
  EXPECT_EQ(profile(facts), "AVC_MP4_MP_HD_720p_AAC");
}

TEST(DlnaH264Mp4, HasNoNameForOtherProfiles) {
  for (const int other : {88, 110, 122, 244, 44, -99, 0})
    EXPECT_EQ(profile(h264(other, 1280, 720, 5000000, 8)), "") << other;
}

// A name of at most 11 characters is dropped, such as the fragment "AVC_MP4_MP_"; that rule does
// not apply to "AVC_MP4_" of the High profile.
TEST(DlnaH264Mp4, AppliesTheLengthRuleToMainNamingOnly) {
  EXPECT_EQ(profile(h264(77, 1280, 720, 8000000, 2)), "");
  EXPECT_EQ(profile(h264(77, 720, 576, 8000000, 0)), "AVC_MP4_MP_SD");
  EXPECT_EQ(profile(h264(100, 3840, 2160, 8000000, 8)), "AVC_MP4_");
}

std::string printed(const DlnaFacts& facts) {
  std::string lines;
  for (const std::string& line : nameDlnaProfile(facts, [] { return kPackets188; }).outputLines)
    lines += line;
  return lines;
}

TEST(DlnaH264Mp4, PrintsItsDebugLines) {
  EXPECT_EQ(printed(h264(66, 352, 288, 500000, 8)), "1. dlnaProfile_:BL_CIF15_ %%%%\n");
  const std::string hd = printed(h264(66, 1280, 720, 500000, 8));
  EXPECT_TRUE(hd.ends_with("1. dlnaProfile_:BL_L31_HD_ %%%%\n")) << hd;
  const std::string carets = hd.substr(0, hd.find('1'));
  EXPECT_EQ(std::count(carets.begin(), carets.end(), '\n'), 2);
  EXPECT_EQ(carets.find_first_not_of("^\n"), std::string::npos);
  EXPECT_EQ(printed(h264(66, 720, 577, 500000, 8)), hd) << "too high for the smaller sizes";
  EXPECT_EQ(printed(h264(66, 1280, 721, 500000, 8)), carets) << "no piece";
  EXPECT_EQ(printed(h264(66, 352, 288, 500000, 2)), "1. dlnaProfile_:BL_CIF15_ %%%%\n")
      << "a piece without a suffix";
  EXPECT_EQ(printed(h264(66, 352, 288, 5000000, 8)), "") << "no piece";
  EXPECT_EQ(printed(h264(66, 1920, 1080, 500000, 8)), "");
  EXPECT_EQ(printed(h264(77, 352, 288, 500000, 8)), "");
}

TEST(DlnaH264, MarksTagAvc1InAnyCaseAndContainer) {
  for (const char* demuxer : {kMp4, kTs, "asf", "nut"}) {
    DlnaFacts facts = h264(77, 720, 576, 5000000, 8);
    facts.demuxer = demuxer;
    EXPECT_FALSE(name(facts).playException.has_value()) << demuxer;
    for (const std::uint32_t avc1 : {tag("avc1"), tag("AVC1"), tag("aVc1")}) {
      facts.codecTag = avc1;
      EXPECT_EQ(name(facts).playException, 0x20001U) << demuxer;
    }
    facts.codecTag = tag("avc2");
    EXPECT_FALSE(name(facts).playException.has_value()) << demuxer;
  }
}

TEST(DlnaH264, HasNoNameInOtherContainers) {
  for (const char* demuxer : {kPs, "asf", "h264", "wtv", "mxf", "gxf", "nut", "pmp"}) {
    DlnaFacts facts = h264(77, 720, 576, 5000000, 8);
    facts.demuxer = demuxer;
    EXPECT_EQ(profile(facts), "") << demuxer;
    EXPECT_EQ(name(facts).mimeType, "") << demuxer;
  }
}

// --- H.264 in transport streams

DlnaFacts h264Ts(int ffmpegProfile, int width, int height, std::int64_t rate, unsigned audioClass,
                 media::Rational frameRate = {25, 1}, int timeBaseDen = 90000) {
  DlnaFacts facts = h264(ffmpegProfile, width, height, rate, audioClass);
  facts.demuxer = kTs;
  facts.realFrameRate = frameRate;
  facts.timeBaseDen = timeBaseDen;
  return facts;
}

// A denominator of the time base that the rate's numerator reaches.
constexpr int kCoarse = 1;

TEST(DlnaH264Ts, NamesFrameRatesOfHd) {
  struct Row {
    int width;
    int height;
    media::Rational rate;
    int timeBaseDen;
    int ffmpegProfile;
    unsigned audioClass;
    const char* expected;
  };
  const media::Rational k50 = {50, 1};
  const Row rows[] = {
      // 60 Hz at full HD requires a coarse clock.
      {1920, 1080, kNtscDoubleRate, kCoarse, 77, 2, "AVC_TS_HD_60_AC3_ISO"},
      {1440, 1080, kNtscDoubleRate, kCoarse, 100, 2, "AVC_TS_HD_60_AC3_ISO"},
      {1920, 1080, kNtscDoubleRate, 90000, 77, 2, "AVC_TS_MP_HD_AC3_ISO"},
      {1920, 1080, {60, 1}, kCoarse, 77, 2, "AVC_TS_MP_HD_AC3_ISO"},
      {1920, 1080, kNtscDoubleRate, kCoarse, 77, 8, "AVC_TS_MP_HD_AAC_MULT5_ISO"},
      {1920, 1080, kNtscDoubleRate, kCoarse, 66, 2, "AVC_TS_BL_MP_HD_AC3_ISO"},
      // 720 x 480.
      {720, 480, kNtscDoubleRate, kCoarse, 77, 2, "AVC_TS_HD_60_AC3_ISO"},
      {720, 480, kNtscDoubleRate, 90000, 77, 2, "AVC_TS_MP_SD_AC3_ISO"},
      {720, 480, k50, kCoarse, 77, 2, "AVC_TS_MP_SD_AC3_ISO"},
      // 1280 x 720 is inverted and requires a fine clock. Stored names depend on it.
      {1280, 720, kNtscDoubleRate, 90000, 77, 2, "AVC_TS_HD_60_AC3_ISO"},
      {1280, 720, kNtscDoubleRate, kCoarse, 77, 2, "AVC_TS_MP_HD_AC3_ISO"},
      {1280, 720, k50, kCoarse, 77, 2, "AVC_TS_HD_50_AC3_ISO"},
      {1280, 720, k50, 90000, 77, 2, "AVC_TS_MP_HD_AC3_ISO"},
      {1280, 720, k50, 50, 77, 2, "AVC_TS_HD_50_AC3_ISO"},
      {1280, 720, k50, 51, 77, 2, "AVC_TS_MP_HD_AC3_ISO"},
      // 50 Hz.
      {720, 576, k50, kCoarse, 100, 2, "AVC_TS_HD_50_AC3_ISO"},
      {1920, 1080, k50, kCoarse, 77, 2, "AVC_TS_HD_50_AC3_ISO"},
      {1440, 1080, k50, kCoarse, 77, 2, "AVC_TS_HD_50_AC3_ISO"},
      {1920, 1080, {51, 1}, kCoarse, 77, 2, "AVC_TS_MP_HD_AC3_ISO"},
      {1920, 1080, k50, kCoarse, 578, 2, "AVC_TS_MP_HD_AC3_ISO"},
      {1920, 1080, k50, kCoarse, 77, 9, "AVC_TS_MP_HD_AAC_MULT5_ISO"},
      // No other size has a name by frame rate.
      {1920, 1088, k50, kCoarse, 77, 2, "AVC_TS_MP_HD_AC3_ISO"},
      {704, 576, k50, kCoarse, 77, 2, "AVC_TS_MP_SD_AC3_ISO"},
      // Denominators of zero.
      {1280, 720, {50, 0}, 0, 77, 2, "AVC_TS_MP_HD_AC3_ISO"},
  };
  for (const Row& row : rows)
    EXPECT_EQ(profile(h264Ts(row.ffmpegProfile, row.width, row.height, 6000000, row.audioClass,
                             row.rate, row.timeBaseDen)),
              row.expected)
        << row.width << "x" << row.height << " at " << row.rate.num << "/" << row.rate.den
        << ", time base " << row.timeBaseDen << ", profile " << row.ffmpegProfile;
}

TEST(DlnaH264Ts, NamesProfilesSizesAndRates) {
  struct Row {
    int ffmpegProfile;
    int width;
    int height;
    std::int64_t rate;
    unsigned audioClass;
    const char* expected;
  };
  const Row rows[] = {
      {66, 352, 288, 384000, 8, "AVC_TS_BL_CIF15_AAC_MULT5_ISO"},
      {66, 352, 288, 384001, 8, "AVC_TS_BL_CIF30_AAC_MULT5_ISO"},
      {66, 352, 288, 3000000, 1, "AVC_TS_BL_CIF30_MPEG1_L3_ISO"},
      // If no Baseline name fits, "BL_" stays in front of the Main name.
      {66, 352, 288, 3000001, 2, "AVC_TS_BL_MP_SD_AC3_ISO"},
      {66, 353, 288, 384000, 2, "AVC_TS_BL_MP_SD_AC3_ISO"},
      {66, 352, 289, 384000, 2, "AVC_TS_BL_MP_SD_AC3_ISO"},
      {66, 720, 576, 10000000, 2, "AVC_TS_BL_MP_SD_AC3_ISO"},
      {66, 721, 576, 10000000, 2, "AVC_TS_BL_MP_HD_AC3_ISO"},
      {66, 720, 577, 10000000, 2, "AVC_TS_BL_MP_HD_AC3_ISO"},
      {66, 720, 576, 10000001, 2, "AVC_TS_BL_MP_HD_AC3_ISO"},
      {66, 1920, 1152, 20000000, 2, "AVC_TS_BL_MP_HD_AC3_ISO"},
      {66, 1921, 1152, 384000, 2, ""},
      {66, 1920, 1153, 384000, 2, ""},
      {66, 1920, 1152, 20000001, 2, ""},
      {77, 720, 576, 10000000, 8, "AVC_TS_MP_SD_AAC_MULT5_ISO"},
      {578, 720, 576, 10000000, 9, "AVC_TS_MP_SD_AAC_MULT5_ISO"},
      {77, 720, 576, 10000001, 8, "AVC_TS_MP_HD_AAC_MULT5_ISO"},
      {77, 721, 576, 10000000, 8, "AVC_TS_MP_HD_AAC_MULT5_ISO"},
      {77, 720, 577, 10000000, 8, "AVC_TS_MP_HD_AAC_MULT5_ISO"},
      {77, 1920, 1152, 20000000, 8, "AVC_TS_MP_HD_AAC_MULT5_ISO"},
      {77, 1920, 1152, 20000001, 8, ""},
      {77, 1921, 1152, 20000000, 8, ""},
      {77, 1920, 1153, 20000000, 8, ""},
      {100, 1920, 1152, 30000000, 2, "AVC_TS_HP_HD_AC3_ISO"},
      {100, 1920, 1152, 30000001, 2, ""},
      {100, 1921, 1152, 30000000, 2, ""},
      {100, 1920, 1153, 30000000, 2, ""},
      {100, 1920, 1152, 30000000, 8, ""},
      {100, 640, 480, 1000000, 8, ""},
      // For other profiles only the audio counts.
      {88, 640, 480, 1000000, 8, "AVC_TS_AAC_MULT5_ISO"},
      {-99, 640, 480, 1000000, 2, "AVC_TS_AC3_ISO"},
      {77, 720, 576, 10000000, 0, ""},
      {77, 720, 576, 10000000, 6, ""},
      {77, 720, 576, 10000000, 7, ""},
      {77, 720, 576, 10000000, 10, ""},
      {77, 720, 576, 10000000, 0x15002, ""},
  };
  for (const Row& row : rows)
    EXPECT_EQ(profile(h264Ts(row.ffmpegProfile, row.width, row.height, row.rate, row.audioClass)),
              row.expected)
        << row.ffmpegProfile << ", " << row.width << "x" << row.height << ", " << row.rate << ", "
        << row.audioClass;
}

TEST(DlnaH264Ts, EndsWithThePacketSuffix) {
  const DlnaFacts main = h264Ts(77, 720, 576, 6000000, 8);
  EXPECT_EQ(profile(main, kPackets188), "AVC_TS_MP_SD_AAC_MULT5_ISO");
  EXPECT_EQ(profile(main, kStamped192), "AVC_TS_MP_SD_AAC_MULT5_T");
  EXPECT_EQ(profile(main, kPackets192), "AVC_TS_MP_SD_AAC_MULT5");
  EXPECT_EQ(profile(main, kNoPackets), "");
  EXPECT_EQ(profile(main, kUnreadable), "");
  EXPECT_EQ(name(main, kPackets188).mimeType, "") << "left to the fallback";
  EXPECT_EQ(name(main, kStamped192).mimeType, kTts);
  EXPECT_EQ(name(main, kPackets192).mimeType, kTts);

  // The High profile is named as time-stamped even if the stamps are empty, except for names by
  // frame rate.
  EXPECT_EQ(profile(h264Ts(100, 1920, 1080, 6000000, 2), kPackets192), "AVC_TS_HP_HD_AC3_T");
  EXPECT_EQ(profile(h264Ts(100, 1920, 1080, 6000000, 2, {50, 1}, kCoarse), kPackets192),
            "AVC_TS_HD_50_AC3");
  EXPECT_EQ(profile(h264Ts(77, 1280, 720, 6000000, 2, kNtscDoubleRate), kStamped192),
            "AVC_TS_HD_60_AC3_T");
}

TEST(DlnaNaming, ReadsThePacketsOnlyOnceAndOnlyIfNeeded) {
  const auto readsOf = [](const DlnaFacts& facts) {
    int reads = 0;
    testing::internal::CaptureStdout();
    nameDlnaProfile(facts, [&] {
      ++reads;
      return kPackets188;
    });
    testing::internal::GetCapturedStdout();
    return reads;
  };
  EXPECT_EQ(readsOf(mpeg2(720, 576)), 1);
  EXPECT_EQ(readsOf(h264Ts(77, 720, 576, 6000000, 8)), 1);
  EXPECT_EQ(readsOf(h264(77, 720, 576, 6000000, 8)), 0);
  DlnaFacts program = mpeg2(720, 576);
  program.demuxer = kPs;
  EXPECT_EQ(readsOf(program), 0);
}

// --- MPEG-4 part 2

struct Mpeg4Row {
  int width;
  int height;
  int ffmpegProfile;
  int level;
  std::int64_t streamBitRate;
  std::int64_t containerBitRate;
  unsigned audioClass;
  const char* expected;
};

DlnaFacts mpeg4(const Mpeg4Row& row, const char* path) {
  DlnaFacts facts;
  facts.codec = CODEC_ID_MPEG4;
  facts.demuxer = kMp4;
  facts.width = row.width;
  facts.height = row.height;
  facts.profile = row.ffmpegProfile;
  facts.level = row.level;
  facts.streamBitRate = row.streamBitRate;
  facts.containerBitRate = row.containerBitRate;
  facts.audioClass = row.audioClass;
  facts.path = path;
  return facts;
}

void PrintTo(const Mpeg4Row& row, std::ostream* out) {
  *out << row.width << "x" << row.height << ", profile " << row.ffmpegProfile << ", level "
       << row.level << ", rates " << row.streamBitRate << " and " << row.containerBitRate
       << ", class " << row.audioClass;
}

TEST(DlnaMpeg4Part2, NamesPhoneFiles) {
  const char* aac = "MPEG4_P2_3GPP_SP_L0B_AAC";
  const char* amr = "MPEG4_P2_3GPP_SP_L0B_AMR";
  const Mpeg4Row rows[] = {
      {176, 144, 0, 0, 128000, 1, 8, aac},      {128, 96, -99, -99, 0, 0, 8, aac},
      {176, 144, 0, 1, 128000, 1, 8, aac},      {176, 144, 0, 9, 128000, 1, 8, aac},
      {176, 144, 0, 9, 128000, 1, 10, amr},     {176, 144, 0, 2, 128000, 1, 8, ""},
      {177, 144, 0, 0, 128000, 1, 8, ""},       {176, 145, 0, 0, 128000, 1, 8, ""},
      {176, 144, 15, 0, 128000, 1, 8, ""},      {176, 144, 0, 0, 128001, 1, 8, ""},
      {176, 144, 0, 0, 128000, 1, 9, ""},       {176, 144, 0, 0, 128000, 1, 0, ""},
      {176, 144, 0, 0, 128000, 1, 0x15002, ""}, {176, 144, 0, 1, 33657, 69977, 8, aac},
      {176, 144, 0, 1, 33657, 36874, 10, amr},  {176, 144, 0, 9, 228189, 267725, 8, ""},
      {177, 144, 0, 0, 128000, 1, 10, ""},      {176, 145, 0, 0, 128000, 1, 10, ""},
      {176, 144, 15, 0, 128000, 1, 10, ""},     {176, 144, 0, 2, 128000, 1, 10, ""},
      {176, 144, 0, 0, 128001, 1, 10, ""},      {176, 144, -99, -99, 0, 0, 10, amr},
  };
  for (const char* path : {"/a/b.3gp", "/a/B.3GP", ".3gp"}) {
    for (const Mpeg4Row& row : rows) {
      EXPECT_EQ(profile(mpeg4(row, path)), row.expected) << testing::PrintToString(row);
      EXPECT_EQ(name(mpeg4(row, path)).mimeType, "video/3gpp") << "named or not";
    }
  }
}

TEST(DlnaMpeg4Part2, NamesOtherMp4Files) {
  const char* asp = "MPEG4_P2_MP4_ASP_AAC";
  const char* vga = "MPEG4_P2_MP4_SP_VGA_AAC";
  const Mpeg4Row rows[] = {
      {720, 576, 0, 42, 9000000, 1000000, 8, asp},
      {720, 576, 15, 42, 9000000, 1000000, 8, asp},
      {720, 576, -99, 42, 9000000, 1000000, 8, asp},
      {720, 576, 1, 1, 0, 1000000, 8, ""},
      {720, 576, 15, 0, 8000000, 9000000, 8, asp},
      {720, 576, 15, 1, 8000000, 9000000, 8, asp},
      {720, 576, 15, 2, 8000000, 9000000, 8, asp},
      {720, 576, 15, 3, 8000000, 9000000, 8, asp},
      {720, 576, 15, 4, 8000000, 9000000, 8, asp},
      {720, 576, 15, 5, 8000000, 9000000, 8, asp},
      {720, 576, 15, 7, 8000000, 9000000, 8, asp},
      {720, 576, 15, -99, 0, 9000000, 8, asp},
      {720, 576, 15, 6, 8000000, 9000000, 8, ""},
      {720, 576, 15, 5, 8000001, 9000000, 8, ""},
      {721, 576, 15, 5, 8000000, 9000000, 8, ""},
      {720, 577, 15, 5, 8000000, 9000000, 8, ""},
      {721, 576, 0, 1, 1, 1000000, 8, ""},
      {720, 577, 0, 1, 1, 1000000, 8, ""},
      {640, 480, 0, 0, 3000000, 4000000, 8, vga},
      {640, 480, 0, 1, 3000000, 4000000, 8, vga},
      {640, 480, 0, 2, 3000000, 4000000, 8, vga},
      {640, 480, 0, 3, 3000000, 4000000, 8, vga},
      {640, 480, 0, 4, 3000000, 4000000, 8, vga},
      {640, 480, 0, 9, 3000000, 4000000, 8, vga},
      {640, 480, -99, -99, 0, 1000001, 8, vga},
      {640, 480, 0, 5, 3000000, 4000000, 8, ""},
      {640, 480, 15, 9, 3000000, 4000000, 8, ""},
      {640, 480, 0, 4, 3000001, 4000000, 8, ""},
      {640, 480, 0, 4, 3000000, 4000001, 8, ""},
      {641, 480, 0, 4, 3000000, 4000000, 8, ""},
      {640, 481, 0, 4, 3000000, 4000000, 8, ""},
      {640, 480, 0, 4, 0, 1000001, 8, vga},
      {640, 480, 0, 4, 0, 0, 8, asp},
      {640, 480, 0, 4, 0, 0, 9, ""},
      {640, 480, 0, 4, 0, 0, 1, ""},
      {640, 480, 0, 4, 0, 0, 10, ""},
      {640, 480, 0, 4, 0, 0, 0x15002, ""},
      // Values of files that FFmpeg wrote.
      {352, 288, 0, 1, 567232, 646426, 8, asp},
      {720, 576, 15, 1, 5035824, 5116141, 8, asp},
      {640, 480, 0, 1, 2889608, 2968802, 8, vga},
      {640, 480, 0, 3, 1120709, 1199893, 8, vga},
      {352, 288, 0, 1, 1033442, 1107754, 1, ""},
  };
  for (const char* path : {"/a/b.mp4", "/a/b.3g2", "/a/b.3gpp", "3gp"}) {
    for (const Mpeg4Row& row : rows) {
      EXPECT_EQ(profile(mpeg4(row, path)), row.expected) << testing::PrintToString(row);
      EXPECT_EQ(name(mpeg4(row, path)).mimeType, "") << "left to the fallback";
    }
  }
}

TEST(DlnaMpeg4Part2, HasNoNameElsewhere) {
  const Mpeg4Row fits = {176, 144, 0, 0, 0, 0, 8, ""};
  for (const char* demuxer : {kTs, kPs, "asf", "m4v", "mxf", "nsv", "ogg", "nut"}) {
    DlnaFacts facts = mpeg4(fits, "/a/b.3gp");
    facts.demuxer = demuxer;
    EXPECT_EQ(profile(facts), "") << demuxer;
    EXPECT_EQ(name(facts).mimeType, "") << demuxer;
  }
}

// --- MPEG-1

TEST(DlnaMpeg1, NamesVideoCdsInProgramStreams) {
  struct Row {
    const char* demuxer;
    int width;
    int height;
    unsigned audioClass;
    std::int64_t rate;
    const char* expected;
    const char* mimeType;
  };
  const Row rows[] = {
      {kPs, 352, 288, 6, 1150000, "MPEG1", "video/mpeg"},
      {kPs, 352, 240, 6, 1150000, "MPEG1", "video/mpeg"},
      {kPs, 352, 288, 0, 1150000, "MPEG1", "video/mpeg"},
      {kPs, 352, 288, 6, 104857200, "MPEG1", "video/mpeg"},
      {kPs, 352, 289, 6, 1150000, "", "video/mpeg"},
      {kPs, 352, 287, 6, 1150000, "", "video/mpeg"},
      {kPs, 352, 239, 6, 1150000, "", "video/mpeg"},
      {kPs, 353, 288, 6, 1150000, "", "video/mpeg"},
      {kPs, 351, 288, 6, 1150000, "", "video/mpeg"},
      {kPs, 320, 240, 6, 104857200, "", "video/mpeg"},
      {kPs, 352, 288, 1, 1150000, "", "video/mpeg"},
      {kPs, 352, 288, 8, 1150000, "", "video/mpeg"},
      {kTs, 352, 288, 6, 1150000, "", ""},
      {"mpegvideo", 352, 288, 0, 1150000, "", ""},
      {kMp4, 352, 288, 6, 1150000, "", ""},
      {"gxf", 352, 288, 6, 1150000, "", ""},
  };
  for (const Row& row : rows) {
    DlnaFacts facts;
    facts.codec = CODEC_ID_MPEG1VIDEO;
    facts.demuxer = row.demuxer;
    facts.width = row.width;
    facts.height = row.height;
    facts.audioClass = row.audioClass;
    facts.streamBitRate = row.rate;
    facts.containerBitRate = 1432571;
    EXPECT_EQ(profile(facts), row.expected)
        << row.demuxer << ", " << row.width << "x" << row.height << ", " << row.audioClass;
    EXPECT_EQ(name(facts).mimeType, row.mimeType) << row.demuxer;
  }
}

// --- WMV3 and VC-1

DlnaFacts windowsMedia(int codec, int ffmpegProfile, int width, int height, std::int64_t rate,
                       unsigned audioClass) {
  DlnaFacts facts;
  facts.codec = codec;
  facts.demuxer = "asf";
  facts.profile = ffmpegProfile;
  facts.width = width;
  facts.height = height;
  facts.streamBitRate = rate;
  facts.containerBitRate = 99000000;
  facts.audioClass = audioClass;
  return facts;
}

TEST(DlnaWindowsMedia, NamesTiersByProfileSizeAndRate) {
  constexpr int kWmv3 = CODEC_ID_WMV3;
  constexpr int kVc1 = CODEC_ID_VC1;
  struct Row {
    int codec;
    int ffmpegProfile;
    int width;
    int height;
    std::int64_t rate;
    const char* expected;  // with base audio
  };
  const Row rows[] = {
      {kWmv3, 0, 176, 144, 96000, "WMVSPLL_BASE"}, {kWmv3, 0, 176, 144, 96001, "WMVSPML_BASE"},
      {kWmv3, 0, 177, 144, 96000, "WMVSPML_BASE"}, {kWmv3, 0, 176, 145, 96000, "WMVSPML_BASE"},
      {kWmv3, 1, 176, 144, 96000, "WMVMED_BASE"},  {kVc1, 0, 176, 144, 96000, "WMVMED_BASE"},
      {kVc1, 3, 176, 144, 96000, "WMVMED_BASE"},   {kWmv3, 0, 352, 288, 384000, "WMVSPML_BASE"},
      {kWmv3, 0, 352, 288, 384001, "WMVMED_BASE"}, {kWmv3, 0, 353, 288, 384000, "WMVMED_BASE"},
      {kWmv3, 0, 352, 289, 384000, "WMVMED_BASE"}, {kWmv3, 1, 720, 576, 10000000, "WMVMED_BASE"},
      {kWmv3, 1, 720, 576, 10000001, ""},          {kWmv3, 1, 721, 576, 10000000, ""},
      {kWmv3, 1, 720, 577, 10000000, ""},          {kWmv3, -99, 176, 144, 96000, "WMVMED_BASE"},
  };
  for (const Row& row : rows)
    EXPECT_EQ(
        profile(windowsMedia(row.codec, row.ffmpegProfile, row.width, row.height, row.rate, 3)),
        row.expected)
        << row.codec << ", profile " << row.ffmpegProfile << ", " << row.width << "x" << row.height
        << ", " << row.rate;
}

TEST(DlnaWindowsMedia, EndsWithTheAudioSuffixOfItsTier) {
  struct Row {
    int ffmpegProfile;
    int width;
    int height;
    unsigned audioClass;
    const char* expected;
  };
  const Row rows[] = {
      {0, 176, 144, 3, "WMVSPLL_BASE"},
      {0, 176, 144, 4, ""},
      {0, 176, 144, 5, ""},
      {0, 176, 144, 1, ""},
      {0, 352, 288, 3, "WMVSPML_BASE"},
      {0, 352, 288, 4, ""},
      {0, 352, 288, 5, ""},
      {0, 352, 288, 1, "WMVSPML_MP3"},
      {1, 720, 576, 3, "WMVMED_BASE"},
      {1, 720, 576, 4, "WMVMED_FULL"},
      {1, 720, 576, 5, "WMVMED_PRO"},
      {1, 720, 576, 1, ""},
      {1, 1920, 1080, 3, ""},
      {1, 1920, 1080, 4, "WMVHIGH_FULL"},
      {1, 1920, 1080, 5, "WMVHIGH_PRO"},
      {1, 1920, 1080, 1, ""},
  };
  for (const Row& row : rows) {
    const DlnaFacts facts = windowsMedia(CODEC_ID_WMV3, row.ffmpegProfile, row.width, row.height,
                                         96000, row.audioClass);
    EXPECT_EQ(profile(facts), row.expected)
        << row.width << "x" << row.height << ", " << row.audioClass;
  }
  for (const unsigned other : {0U, 2U, 6U, 7U, 8U, 9U, 10U, 0x15002U})
    for (const auto& [width, height] :
         {std::pair(176, 144), std::pair(352, 288), std::pair(720, 576), std::pair(1920, 1080)})
      EXPECT_EQ(profile(windowsMedia(CODEC_ID_WMV3, 0, width, height, 96000, other)), "") << other;
}

TEST(DlnaWindowsMedia, HasNoNameBeyondTheHighTier) {
  EXPECT_EQ(profile(windowsMedia(CODEC_ID_VC1, 3, 1920, 1080, 20000000, 4)), "WMVHIGH_FULL");
  EXPECT_EQ(profile(windowsMedia(CODEC_ID_VC1, 3, 1920, 1080, 20000001, 4)), "");
  EXPECT_EQ(profile(windowsMedia(CODEC_ID_VC1, 3, 1921, 1080, 20000000, 4)), "");
  EXPECT_EQ(profile(windowsMedia(CODEC_ID_VC1, 3, 1920, 1081, 20000000, 4)), "");
}

TEST(DlnaWindowsMedia, UsesTheContainersRateForAnUnknownOne) {
  DlnaFacts facts = windowsMedia(CODEC_ID_WMV3, 0, 176, 144, 0, 3);
  facts.containerBitRate = 76852;
  EXPECT_EQ(profile(facts), "WMVSPLL_BASE");
  facts.containerBitRate = 292142;
  EXPECT_EQ(profile(facts), "WMVSPML_BASE");
  facts.containerBitRate = 714393;
  EXPECT_EQ(profile(facts), "WMVMED_BASE");
  facts.containerBitRate = 0;
  EXPECT_EQ(profile(facts), "WMVSPLL_BASE") << "an unknown rate fails no test";
  facts.streamBitRate = 1;
  facts.containerBitRate = 714393;
  EXPECT_EQ(profile(facts), "WMVSPLL_BASE") << "any known rate of the stream counts";
}

TEST(DlnaWindowsMedia, ReadsAnUnknownProfileFromTheSequenceHeader) {
  const std::array<std::uint8_t, 4> simple = {0x3F, 0, 0, 0};
  const std::array<std::uint8_t, 4> main = {0x4F, 0, 0, 0};
  DlnaFacts facts = windowsMedia(CODEC_ID_WMV3, -99, 176, 144, 96000, 3);
  facts.extraData = simple;
  EXPECT_EQ(profile(facts), "WMVSPLL_BASE");
  facts.extraData = main;
  EXPECT_EQ(profile(facts), "WMVMED_BASE");
  facts.profile = 0;
  EXPECT_EQ(profile(facts), "WMVSPLL_BASE") << "FFmpeg's profile takes precedence";
}

TEST(DlnaWindowsMedia, HasItsMimeTypeOnlyInAsfEvenWithoutName) {
  EXPECT_EQ(name(windowsMedia(CODEC_ID_VC1, 3, 4000, 4000, 0, 0)).mimeType, "video/x-ms-wmv");
  for (const char* demuxer : {kTs, kPs, "vc1", kMp4, "mxf", "vc1test", "asf_o"}) {
    DlnaFacts facts = windowsMedia(CODEC_ID_VC1, 3, 720, 576, 0, 3);
    facts.demuxer = demuxer;
    EXPECT_EQ(profile(facts), "") << demuxer;
    EXPECT_EQ(name(facts).mimeType, "") << demuxer;
  }
}

TEST(DlnaOtherCodecs, HaveNeitherNameNorMimeType) {
  for (const int codec : {CODEC_ID_WMV1, CODEC_ID_WMV2, CODEC_ID_H263, CODEC_ID_HEVC,
                          CODEC_ID_MJPEG, CODEC_ID_NONE, CODEC_ID_VP8}) {
    for (const char* demuxer : {kTs, kPs, kMp4, "asf"}) {
      DlnaFacts facts = mpeg2(720, 576);
      facts.codec = codec;
      facts.demuxer = demuxer;
      EXPECT_EQ(profile(facts), "") << codec;
      EXPECT_EQ(name(facts).mimeType, "") << codec;
    }
  }
}

// --- Helpers of the naming

TEST(WmvHighTestStream, IsRecognisedAnywhereInTheFileName) {
  for (const char* stream : {"O-WVH_F-02_CBR_17M_193_48_2_16", "O-WVH_F-02_VBR_17M_193_48_2_16",
                             "O-WVH_F-04_CBR_15M_193_44_2_16", "O-WVH_F-04_VBR_15M_193_44_2_16"}) {
    EXPECT_TRUE(isWmvHighTestStream(std::string(stream) + ".wmv"));
    EXPECT_TRUE(isWmvHighTestStream("copy of " + std::string(stream)));
  }
  EXPECT_FALSE(isWmvHighTestStream("O-WVH_F-03_CBR_17M_193_48_2_16.wmv"));
  EXPECT_FALSE(isWmvHighTestStream("o-wvh_f-02_cbr_17m_193_48_2_16.wmv"));
  EXPECT_FALSE(isWmvHighTestStream(""));
}

TEST(FallbackMimeType, FollowsTheDemuxer) {
  struct Row {
    const char* demuxer;
    const char* path;
    const char* expected;
  };
  const Row rows[] = {
      {"avi", "a.avi", "video/x-msvideo"},
      {"mpeg", "a.mpg", "video/mpeg"},
      {"mpegts", "a.ts", "video/mpeg"},
      {"mpegvideo", "a.m2v", "video/mpeg"},
      {"asf", "a.wmv", "video/x-ms-wmv"},
      {kMp4, "a.mov", "video/quicktime"},
      {kMp4, "a.MOV", "video/quicktime"},
      {kMp4, "a.mp4", "video/mp4"},
      {kMp4, "mov", "video/mp4"},
      {"matroska,webm", "a.mkv", "video/x-matroska"},
      {"matroska", "a.mkv", "video/x-matroska"},
      {"flv", "a.flv", "video/x-flv"},
      {"live_flv", "a.flv", ""},
      {"h264", "a.h264", ""},
      {"m4v", "a", ""},
      {"vc1", "a", ""},
      {"rm", "a.rm", ""},
      {"wtv", "a", ""},
      {"mxf", "a", ""},
      {"nut", "a", ""},
      {"ogg", "a", ""},
      {"", "", ""},
  };
  for (const Row& row : rows)
    EXPECT_EQ(media::fallbackMimeType(row.demuxer, row.path), row.expected) << row.demuxer;
}

// --- Measured values of files that FFmpeg 3.4 wrote, through the naming and the fallback

TEST(DlnaNaming, NamesFilesAsMeasured) {
  struct Row {
    const char* what;
    const char* demuxer;
    int codec;
    int width;
    int height;
    int ffmpegProfile;
    int level;
    std::int64_t streamBitRate;
    std::int64_t containerBitRate;
    unsigned audioClass;
    const char* path;
    const char* expected;
    const char* mimeType;
  };
  const Row rows[] = {
      {"VCD", kPs, 1, 352, 288, -99, -99, 1150000, 1432571, 6, "a.mpg", "MPEG1", "video/mpeg"},
      {"MPEG-1 of variable rate", kPs, 1, 320, 240, -99, -99, 104857200, 1523631, 6, "a.mpg", "",
       "video/mpeg"},
      {"MPEG-1 alone", "mpegvideo", 1, 352, 288, -99, -99, 104857200, 104855817, 0, "a.m1v", "",
       "video/mpeg"},
      {"MPEG-2 alone", "mpegvideo", 2, 720, 576, 4, 8, 0, 0, 0, "a.m2v", "", "video/mpeg"},
      {"MPEG-2", kMp4, 2, 720, 576, 4, 8, 4309949, 4400000, 8, "a.mp4", "", "video/mp4"},
      {"MPEG-2", "asf", 2, 720, 576, 4, 8, 0, 4400000, 3, "a.wmv", "", "video/x-ms-wmv"},
      {"MPEG-2", "wtv", 2, 720, 576, 4, 8, 0, 4400000, 6, "a.wtv", "", ""},
      {"MPEG-2", "mxf", 2, 720, 576, 4, 8, 0, 4400000, 7, "a.mxf", "", ""},
      {"H.264 alone", "h264", 28, 352, 288, 77, 13, 0, 0, 0, "a.h264", "", ""},
      {"H.264", kPs, 28, 352, 288, 77, 13, 0, 900000, 2, "a.mpg", "", "video/mpeg"},
      {"H.264", "asf", 28, 352, 288, 77, 13, 0, 900000, 3, "a.wmv", "", "video/x-ms-wmv"},
      {"H.264", "wtv", 28, 352, 288, 77, 13, 0, 900000, 2, "a.wtv", "", ""},
      {"H.264", "mxf", 28, 352, 288, 77, 13, 0, 900000, 7, "a.mxf", "", ""},
      {"H.264", "nut", 28, 352, 288, 77, 13, 0, 900000, 2, "a.nut", "", ""},
      {"MPEG-4 at CIF", kMp4, 13, 352, 288, 0, 1, 567232, 646426, 8, "a.mp4",
       "MPEG4_P2_MP4_ASP_AAC", "video/mp4"},
      {"MPEG-4 at D1 with B frames", kMp4, 13, 720, 576, 15, 1, 5035824, 5116141, 8, "a.mp4",
       "MPEG4_P2_MP4_ASP_AAC", "video/mp4"},
      {"MPEG-4 at VGA", kMp4, 13, 640, 480, 0, 1, 2889608, 2968802, 8, "a.mp4",
       "MPEG4_P2_MP4_SP_VGA_AAC", "video/mp4"},
      {"MPEG-4 at VGA, another encoder", kMp4, 13, 640, 480, 0, 3, 1120709, 1199893, 8, "a.mp4",
       "MPEG4_P2_MP4_SP_VGA_AAC", "video/mp4"},
      {"MPEG-4 with MP3", kMp4, 13, 352, 288, 0, 1, 1033442, 1107754, 1, "a.mp4", "", "video/mp4"},
      {"MPEG-4 for phones, AAC", kMp4, 13, 176, 144, 0, 1, 33657, 69977, 8, "a.3gp",
       "MPEG4_P2_3GPP_SP_L0B_AAC", "video/3gpp"},
      {"MPEG-4 for phones, AMR", kMp4, 13, 176, 144, 0, 1, 33657, 36874, 10, "a.3gp",
       "MPEG4_P2_3GPP_SP_L0B_AMR", "video/3gpp"},
      {"MPEG-4 over the rate of phones", kMp4, 13, 176, 144, 0, 9, 228189, 267725, 8, "a.3gp", "",
       "video/3gpp"},
      {"H.263 for phones", kMp4, 5, 176, 144, -99, -99, 171973, 174373, 0, "a.3gp", "",
       "video/mp4"},
      {"WMV3 Simple", "asf", 73, 176, 144, 0, -99, 0, 76852, 3, "a.wmv", "WMVSPLL_BASE",
       "video/x-ms-wmv"},
      {"WMV3 Simple, higher rate", "asf", 73, 176, 144, 0, -99, 0, 292142, 3, "a.wmv",
       "WMVSPML_BASE", "video/x-ms-wmv"},
      {"WMV3 Main at QCIF", "asf", 73, 176, 144, 1, -99, 0, 76852, 3, "a.wmv", "WMVMED_BASE",
       "video/x-ms-wmv"},
      {"WMV3 Main at CIF", "asf", 73, 352, 288, 1, -99, 0, 714393, 3, "a.wmv", "WMVMED_BASE",
       "video/x-ms-wmv"},
      {"WMV3 Main at 720 lines", "asf", 73, 1280, 720, 1, -99, 0, 3686708, 4, "a.wmv",
       "WMVHIGH_FULL", "video/x-ms-wmv"},
      {"VC-1 without audio", "asf", 72, 352, 288, 3, 0, 0, 900000, 0, "a.wmv", "",
       "video/x-ms-wmv"},
      {"VC-1", kTs, 72, 1920, 1080, 3, 3, 0, 9000000, 2, "a.m2ts", "", "video/mpeg"},
      {"VC-1 alone", "vc1", 72, 352, 288, 3, 1, 0, 0, 0, "a.vc1", "", ""},
      {"a RealMedia file", "rm", 71, 352, 288, -99, -99, 0, 900000, 0, "a.rmvb", "", ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << row.what << " in " << row.demuxer);
    DlnaFacts facts;
    facts.codec = row.codec;
    facts.demuxer = row.demuxer;
    facts.width = row.width;
    facts.height = row.height;
    facts.profile = row.ffmpegProfile;
    facts.level = row.level;
    facts.streamBitRate = row.streamBitRate;
    facts.containerBitRate = row.containerBitRate;
    facts.audioClass = row.audioClass;
    facts.path = row.path;
    const DlnaName named = name(facts);
    EXPECT_EQ(named.profile, row.expected);
    EXPECT_EQ(
        named.mimeType.empty() ? media::fallbackMimeType(row.demuxer, row.path) : named.mimeType,
        row.mimeType);
  }
}

// --- The explanation

DlnaExplanation explanationOf(const DlnaFacts& facts, TransportPackets packets = kPackets188) {
  DlnaExplanation explanation;
  testing::internal::CaptureStdout();
  nameDlnaProfile(
      facts, [packets] { return packets; }, &explanation);
  testing::internal::GetCapturedStdout();
  return explanation;
}

TEST(DlnaExplanation, ListsEveryTestOfEveryCandidate) {
  const auto candidates = explanationOf(h264(77, 1280, 720, 8000000, 2)).candidates;
  ASSERT_EQ(candidates.size(), 3U);
  EXPECT_EQ(candidates[1].name, "AVC_MP4_MP_HD_720p_AAC");
  EXPECT_FALSE(candidates[1].taken);
  struct Row {
    bool held;
    const char* wanted;
    const char* actual;
  };
  const Row rows[] = {
      {true, "width at most 1280", "1280"},
      {true, "height at most 720", "720"},
      {true, "video bit rate at most 15000000 bit/s", "8000000 bit/s"},
      {false, "audio AAC-LC stereo", "AC-3 or DTS"},
  };
  ASSERT_EQ(candidates[1].tests.size(), std::size(rows));
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    EXPECT_EQ(candidates[1].tests[i].held, rows[i].held) << rows[i].wanted;
    EXPECT_EQ(candidates[1].tests[i].wanted, rows[i].wanted);
    EXPECT_EQ(candidates[1].tests[i].actual, rows[i].actual);
  }
}

TEST(DlnaExplanation, MarksTheChosenCandidate) {
  const auto candidates = explanationOf(h264(100, 1920, 1080, 8000000, 8)).candidates;
  ASSERT_EQ(candidates.size(), 1U);
  EXPECT_TRUE(candidates[0].taken);
  EXPECT_EQ(candidates[0].name, "AVC_MP4_HP_HD_AAC");
}

TEST(DlnaExplanation, DistinguishesSimpleWmv3FromOthers) {
  for (const auto& [ffmpegProfile, actual] :
       {std::pair(0, "WMV3 of the Simple profile"), std::pair(1, "another")}) {
    const DlnaFacts facts = windowsMedia(CODEC_ID_WMV3, ffmpegProfile, 176, 144, 96000, 3);
    const DlnaTest test = explanationOf(facts).candidates.at(0).tests.at(0);
    EXPECT_EQ(test.held, ffmpegProfile == 0);
    EXPECT_EQ(test.wanted, "WMV3 of the Simple profile");
    EXPECT_EQ(test.actual, actual);
  }
}

std::string detail(const DlnaExplanation& explanation, const std::string& label) {
  for (const DlnaDetail& row : explanation.details)
    if (row.label == label) return row.value;
  return "(missing)";
}

TEST(DlnaExplanation, DescribesTheFileInWords) {
  DlnaExplanation explanation =
      explanationOf(h264Ts(77, 1280, 720, 0, 8, kNtscDoubleRate), kStamped192);
  EXPECT_EQ(detail(explanation, "container"), "MPEG transport stream");
  EXPECT_EQ(detail(explanation, "video"), "H264");
  EXPECT_EQ(detail(explanation, "profile"), "Main");
  EXPECT_EQ(detail(explanation, "level"), "3");
  EXPECT_EQ(detail(explanation, "frame size"), "1280 x 720");
  EXPECT_EQ(detail(explanation, "frames"), "59.94 per second");
  EXPECT_EQ(detail(explanation, "video bit rate"), "unknown");
  EXPECT_EQ(detail(explanation, "audio"), "AAC-LC stereo");
  EXPECT_EQ(detail(explanation, "packets"), "192 bytes, time-stamped");
  explanation = explanationOf(mpeg2(720, 576, {25, 0}, 77), kPackets192);
  EXPECT_EQ(detail(explanation, "frames"), "unknown");
  explanation = explanationOf(mpeg2(720, 576, {90000, 1}, 77), kPackets192);
  EXPECT_EQ(detail(explanation, "frames"), "90000 per second");
  EXPECT_EQ(detail(explanation, "audio"), "77");
  EXPECT_EQ(detail(explanation, "packets"), "192 bytes, time stamps empty");
  EXPECT_EQ(detail(explanationOf(mpeg2(720, 576), kUnreadable), "packets"), "unknown size");
  EXPECT_EQ(detail(explanationOf(h264(77, 720, 576, 1, 8)), "packets"), "(missing)")
      << "no rule needed them";
}

TEST(DlnaExplanation, WritesProfilesAndLevelsInTheUsualForm) {
  struct Row {
    int codec;
    int ffmpegProfile;
    int level;
    const char* profile;
    const char* levelText;
  };
  const Row rows[] = {
      {CODEC_ID_H264, 66, 9, "Baseline", "1b"},
      {CODEC_ID_H264, 578, 31, "Constrained Baseline", "3.1"},
      {CODEC_ID_H264, 100, 40, "High", "4"},
      {CODEC_ID_H264, 110, -99, "High 10", "unknown"},
      {CODEC_ID_H264, -99, 52, "unknown", "5.2"},
      {CODEC_ID_H264, 4711, 10, "4711", "1"},
      {CODEC_ID_MPEG4, 0, 9, "Simple", "0b"},
      {CODEC_ID_MPEG4, 15, 7, "Advanced Simple", "3b"},
      {CODEC_ID_MPEG4, -99, -99, "unknown", "unknown"},
      {CODEC_ID_MPEG4, 1, 5, "1", "5"},
  };
  for (const Row& row : rows) {
    DlnaFacts facts = h264(row.ffmpegProfile, 720, 576, 1, 8);
    facts.codec = row.codec;
    facts.level = row.level;
    const DlnaExplanation explanation = explanationOf(facts);
    EXPECT_EQ(detail(explanation, "profile"), row.profile);
    EXPECT_EQ(detail(explanation, "level"), row.levelText);
  }
}

TEST(DlnaExplanation, RemarksOnWhatCandidatesCannotShow) {
  const auto remarks = [](const DlnaFacts& facts, TransportPackets packets = kPackets188) {
    const DlnaExplanation explanation = explanationOf(facts, packets);
    EXPECT_EQ(explanation.remarks.size(), 1U);
    return explanation.remarks.empty() ? "" : explanation.remarks[0];
  };
  using testing::HasSubstr;
  EXPECT_THAT(remarks(h264(110, 1280, 720, 1, 8)), HasSubstr("Baseline, Main and High"));
  EXPECT_THAT(remarks(h264(100, 3840, 2160, 1, 8)), HasSubstr("AVC_MP4_ alone"));
  EXPECT_THAT(remarks(mpeg2(720, 576), kNoPackets), HasSubstr("unknown size"));
  DlnaFacts facts = h264(77, 720, 576, 1, 8);
  facts.demuxer = "nut";
  for (const auto& [codec, words] : {std::pair(CODEC_ID_H264, "H.264 video has names"),
                                     std::pair(CODEC_ID_MPEG2VIDEO, "MPEG-2 video has names"),
                                     std::pair(CODEC_ID_MPEG4, "MPEG-4 part 2 video has names"),
                                     std::pair(CODEC_ID_MPEG1VIDEO, "MPEG-1 video has a name"),
                                     std::pair(CODEC_ID_VC1, "WMV3 and VC-1 video have names"),
                                     std::pair(CODEC_ID_MSMPEG4V3, "MIME type only"),
                                     std::pair(CODEC_ID_HEVC, "no profile is known")}) {
    facts.codec = codec;
    EXPECT_THAT(remarks(facts), HasSubstr(words));
  }
}

// Extreme numbers, as in broken files.
TEST(DlnaNaming, AcceptsAnyNumbers) {
  constexpr int kExtremes[] = {INT_MIN, -1, 0, 1, INT_MAX};
  for (const int codec : {1, 2, 13, 17, 28, 72, 73, -1}) {
    for (const char* demuxer : {kTs, kPs, kMp4, "asf", ""}) {
      for (const int a : kExtremes) {
        for (const int b : kExtremes) {
          DlnaFacts facts = h264(b, a, b, a, static_cast<unsigned>(b));
          facts.codec = codec;
          facts.demuxer = demuxer;
          facts.containerBitRate = b;
          facts.level = a;
          facts.realFrameRate = {a, b};
          facts.timeBaseDen = b;
          EXPECT_LT(name(facts, {static_cast<unsigned>(a), true}).profile.size(), 128U);
        }
      }
    }
  }
}

}  // namespace

}  // namespace kolum::dlna
