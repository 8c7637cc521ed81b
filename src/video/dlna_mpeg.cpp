// The rules for MPEG-1, MPEG-2 and MPEG-4 part 2 video.
#include <array>

#include "support/text.h"
#include "video/dlna_rules.h"

namespace kolum::video {

namespace {

bool isPal(int height) {
  return height == 288 || height == 576;
}

// Frame sizes and rates that Korean television takes as well; the second name of such files.
bool isKoreanHd(const DlnaFacts& facts) {
  const int rate = quotient(facts.realFrameRate.num, facts.realFrameRate.den);
  return (facts.width == 1920 && facts.height == 1080 && rate >= 29) ||
         (facts.width == 1280 && facts.height == 720 && rate >= 59);
}

// 640 or 704 by 480.
bool isKoreanSd(const DlnaFacts& facts) {
  constexpr int kBitBetween640And704 = 64;
  return (facts.width & ~kBitBetween640And704) == 640 && facts.height == 480;
}

// The pieces behind "MPEG_TS_": the name for everybody, and for Korea where there is one.
struct TransportPieces {
  std::string primary;
  std::string alternative;
};

TransportPieces transportPieces(const Naming& naming) {
  const DlnaFacts& facts = naming.facts;
  if (naming.candidate("MPEG_TS_HD_NA")
          .atLeast("width", facts.width, 1280)
          .atLeast("height", facts.height, 720)
          .hold()) {
    return {"HD_NA", isKoreanHd(facts) ? "HD_KO" : ""};
  }
  if (naming.candidate("MPEG_TS_SD_EU").oneOf("height", facts.height, {288, 576}).hold())
    return {"SD_EU", ""};
  return {"SD_NA", isKoreanSd(facts) ? "SD_KO" : ""};
}

void nameMpeg2Transport(Naming& naming) {
  const std::string prefix = naming.primary() + "TS_";
  // Japanese television is told by its AAC alone and has neither packet suffix nor alternative. It
  // is no aim for other files, so it is explained only where it holds.
  if (naming.facts.audioClass == kAudioClassAacOther) {
    naming.candidate("MPEG_TS_JP_T").audio(naming.facts.audioClass, {kAudioClassAacOther}).hold();
    naming.primary() = prefix + "JP_T";
    return;
  }
  const TransportPackets packets = naming.readPackets();
  const TransportPieces pieces = transportPieces(naming);
  std::string primary = prefix + pieces.primary;
  std::string suffix = "_ISO";
  if (packets.size == 192) {
    suffix = packets.isTimeStamped ? "_T" : "";
    naming.name.mimeType = kTimeStampedMimeType;
  } else {
    naming.name.mimeType = "video/mpeg";
    // Packets of unknown size leave the suffix alone as the name; renderers were tested with it.
    if (packets.size != 188) primary.clear();
  }
  naming.primary() = primary + suffix;
  if (!pieces.alternative.empty()) naming.primary() += "," + prefix + pieces.alternative + suffix;
}

// MPEG-4 part 2 in MP4, tried from the first row on.
struct Mpeg4Row {
  std::string_view name;
  int width;
  int height;
  std::initializer_list<std::int64_t> profiles;
  std::initializer_list<std::int64_t> levels;  // empty: any
  std::int64_t streamBitRate;
  std::int64_t containerBitRate;
  unsigned audioClass;
};

constexpr std::int64_t kAnyRate = INT64_MAX;

const Mpeg4Row kPhoneRows[] = {
    {"MPEG4_P2_3GPP_SP_L0B_AAC",
     176,
     144,
     {0, -99},
     {-99, 0, 1, 9},
     128000,
     kAnyRate,
     kAudioClassAacStereo},
    {"MPEG4_P2_3GPP_SP_L0B_AMR",
     176,
     144,
     {0, -99},
     {-99, 0, 1, 9},
     128000,
     kAnyRate,
     kAudioClassAmr},
};

const Mpeg4Row kMp4Rows[] = {
    {"MPEG4_P2_MP4_ASP_AAC", 720, 576, {0, 15, -99}, {}, kAnyRate, 1000000, kAudioClassAacStereo},
    {"MPEG4_P2_MP4_ASP_AAC",
     720,
     576,
     {15},
     {-99, 0, 1, 2, 3, 4, 5, 7},
     8000000,
     kAnyRate,
     kAudioClassAacStereo},
    {"MPEG4_P2_MP4_SP_VGA_AAC",
     640,
     480,
     {0, -99},
     {-99, 0, 1, 2, 3, 4, 9},
     3000000,
     4000000,
     kAudioClassAacStereo},
};

bool fits(const Naming& naming, const Mpeg4Row& row) {
  const DlnaFacts& facts = naming.facts;
  Tests tests = naming.candidate(row.name);
  tests.frame(facts, row.width, row.height).oneOf("profile", facts.profile, row.profiles);
  if (row.levels.size() > 0) tests.oneOf("level", facts.level, row.levels);
  if (row.streamBitRate != kAnyRate)
    tests.atMost("video bit rate", facts.streamBitRate, row.streamBitRate);
  if (row.containerBitRate != kAnyRate)
    tests.atMost("overall bit rate", facts.containerBitRate, row.containerBitRate);
  return tests.audio(facts.audioClass, {row.audioClass}).hold();
}

}  // namespace

void nameMpeg2(Naming& naming) {
  const DlnaFacts& facts = naming.facts;
  naming.primary() = "MPEG_";
  if (facts.demuxer == av::kDemuxerMpegTs) {
    nameMpeg2Transport(naming);
  } else if (facts.demuxer == av::kDemuxerMpegPs) {
    naming.name.mimeType = "video/mpeg";
    naming.primary() += isPal(facts.height) ? "PS_PAL" : "PS_NTSC";
  } else {
    naming.primary().clear();
  }
}

void nameMpeg4Part2(Naming& naming) {
  const DlnaFacts& facts = naming.facts;
  if (facts.demuxer != av::kDemuxerMp4) return;
  const bool isPhone = endsWithIgnoringCase(facts.path, ".3gp");
  if (isPhone) naming.name.mimeType = "video/3gpp";
  const std::span<const Mpeg4Row> rows =
      isPhone ? std::span<const Mpeg4Row>(kPhoneRows) : std::span<const Mpeg4Row>(kMp4Rows);
  const auto row =
      std::find_if(rows.begin(), rows.end(), [&](const Mpeg4Row& r) { return fits(naming, r); });
  if (row != rows.end()) naming.primary() = row->name;
}

void nameMpeg1(Naming& naming) {
  const DlnaFacts& facts = naming.facts;
  if (facts.demuxer != av::kDemuxerMpegPs) return;
  naming.name.mimeType = "video/mpeg";
  // No test of the bit rate: streams of variable rate tell none that means anything.
  if (naming.candidate("MPEG1")
          .exactly("width", facts.width, 352)
          .oneOf("height", facts.height, {240, 288})
          .audio(facts.audioClass, {kAudioClassMp2, kAudioClassNone})
          .hold()) {
    naming.primary() = "MPEG1";
  }
}

}  // namespace kolum::video
