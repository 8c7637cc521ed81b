// The rules for H.264 video.
#include <kolum/identifiers.h>

#include <cstdio>

#include "support/text.h"
#include "video/dlna_rules.h"

namespace kolum::video {

namespace {

// FFmpeg's profile numbers.
constexpr int kBaseline = 66;
constexpr int kConstrainedBaseline = 578;
constexpr int kMain = 77;
constexpr int kHigh = 100;
// Takes the profile's place once a frame rate has named the stream.
constexpr int kNamedByFrameRate = -100;

// FFmpeg's level numbers.
constexpr int kLevel3 = 30;
constexpr int kLevel31 = 31;
constexpr int kLevel32 = 32;

// A name of this length or less is no name: "AVC_MP4_MP_" without a suffix.
constexpr std::size_t kLongestFragment = 11;

bool isTaggedAvc1(std::uint32_t tag) {
  std::string text;
  for (int shift = 0; shift < 32; shift += 8) text += static_cast<char>(tag >> shift & 0xFF);
  return equalsIgnoringCase(text, "avc1");
}

void applyLengthRule(Naming& naming) {
  if (naming.primary().size() <= kLongestFragment) naming.primary().clear();
}

std::string_view sdAudioSuffix(unsigned audioClass) {
  switch (audioClass) {
    case kAudioClassAc3:
      return "_AC3";
    case kAudioClassAacStereo:
    case kAudioClassAacMultichannel:
      return "_AAC_MULT5";
    case kAudioClassMp3:
      return "_MPEG1_L3";
    default:
      return "";
  }
}

void nameMainInMp4(Naming& naming) {
  constexpr std::int64_t kSdBitRate = 10000000;
  constexpr std::int64_t k720pBitRate = 15000000;
  constexpr std::int64_t k1080iBitRate = 21000000;
  const DlnaFacts& facts = naming.facts;
  std::string& primary = naming.primary();
  primary += "MP_";
  if (naming.candidate("AVC_MP4_MP_SD")
          .frame(facts, 720, 576)
          .atMost("video bit rate", facts.streamBitRate, kSdBitRate)
          .hold()) {
    primary += "SD";
    primary += sdAudioSuffix(facts.audioClass);
  } else if (naming.candidate("AVC_MP4_MP_HD_720p_AAC")
                 .frame(facts, 1280, 720)
                 .atMost("video bit rate", facts.streamBitRate, k720pBitRate)
                 .audio(facts.audioClass, {kAudioClassAacStereo})
                 .hold()) {
    primary += "HD_720p_AAC";
  } else if (naming.candidate("AVC_MP4_MP_HD_1080i_AAC")
                 .frame(facts, 1920, 1080)
                 .atMost("video bit rate", facts.streamBitRate, k1080iBitRate)
                 .audio(facts.audioClass, {kAudioClassAacStereo})
                 .hold()) {
    // Also a 720-line stream whose bit rate is too high for its own name; renderers expect it.
    primary += "HD_1080i_AAC";
  }
  applyLengthRule(naming);
}

std::string cifPiece(const Naming& naming) {
  const std::int64_t rate = naming.facts.containerBitRate;
  if (naming.candidate("BL_CIF15").atMost("overall bit rate", rate, 599999).hold())
    return "BL_CIF15_";
  if (naming.candidate("BL_CIF30").atMost("overall bit rate", rate, 4999999).hold())
    return "BL_CIF30_";
  return "";
}

constexpr std::int64_t kL31BitRate = 15000000;
constexpr std::int64_t kL32BitRate = 21000000;

std::string sdPiece(const Naming& naming) {
  constexpr std::int64_t kL3BitRate = 5000000;
  const DlnaFacts& facts = naming.facts;
  if (naming.candidate("BL_L3L_SD")
          .exactly("level", facts.level, kLevel3)
          .atMost("overall bit rate", facts.containerBitRate, kL3BitRate)
          .hold()) {
    return "BL_L3L_SD_";
  }
  if (naming.candidate("BL_L31_HD")
          .atMost("level", facts.level, kLevel31)
          .atMost("overall bit rate", facts.containerBitRate, kL31BitRate)
          .hold()) {
    return "BL_L31_HD_";
  }
  return "";
}

std::string hdPiece(const Naming& naming) {
  const DlnaFacts& facts = naming.facts;
  std::printf("^^^^^^^^^^^^^^^^\n");
  std::printf("^^^^^^^^^^^^^^^^\n");
  if (naming.candidate("BL_L31_HD")
          .atMost("height", facts.height, 720)
          .atMost("level", facts.level, kLevel31)
          .atMost("overall bit rate", facts.containerBitRate, kL31BitRate)
          .hold()) {
    return "BL_L31_HD_";
  }
  if (naming.candidate("BL_L32_HD")
          .atMost("height", facts.height, 720)
          .atMost("level", facts.level, kLevel32)
          .atMost("overall bit rate", facts.containerBitRate, kL32BitRate)
          .hold()) {
    return "BL_L32_HD_";
  }
  return "";
}

// The piece behind "AVC_MP4_" by frame size, rate and level; empty when none fits.
std::string baselinePiece(const Naming& naming) {
  const DlnaFacts& facts = naming.facts;
  if (facts.width <= 352 && facts.height <= 288) return cifPiece(naming);
  if (facts.width <= 720 && facts.height <= 576) return sdPiece(naming);
  if (facts.width <= 1280) return hdPiece(naming);
  return "";
}

std::string baselineAudioSuffix(const Naming& naming, const std::string& piece) {
  const DlnaFacts& facts = naming.facts;
  const bool isCif = piece.starts_with("BL_CIF");
  if (isCif && naming.candidate(piece + "AMR").audio(facts.audioClass, {kAudioClassAmr}).hold())
    return "AMR";
  if (!isCif)
    return naming.candidate(piece + "AAC").audio(facts.audioClass, {kAudioClassAacStereo}).hold()
               ? "AAC"
               : "";
  const struct {
    const char* suffix;
    std::int64_t bitRate;
  } rows[] = {{"AAC_520", 519999}, {"AAC_940", 939999}};
  for (const auto& row : rows) {
    if (naming.candidate(piece + row.suffix)
            .audio(facts.audioClass, {kAudioClassAacStereo})
            .atMost("overall bit rate", facts.containerBitRate, row.bitRate)
            .hold()) {
      return row.suffix;
    }
  }
  return "";
}

void nameBaselineInMp4(Naming& naming) {
  const std::string piece = baselinePiece(naming);
  if (!piece.empty()) {
    std::printf("1. dlnaProfile_:%s %%%%%%%%\n", piece.c_str());
    const std::string suffix = baselineAudioSuffix(naming, piece);
    if (!suffix.empty()) {
      naming.primary() += piece + suffix;
      return;
    }
  }
  nameMainInMp4(naming);
}

void nameInMp4(Naming& naming) {
  constexpr std::int64_t kHighBitRate = 25000000;
  const DlnaFacts& facts = naming.facts;
  naming.primary() += "MP4_";
  switch (facts.profile) {
    case kHigh:
      // A stream that fails keeps "AVC_MP4_": renderers of the time play it by that.
      if (naming.candidate("AVC_MP4_HP_HD_AAC")
              .frame(facts, 1920, 1080)
              .atMost("video bit rate", facts.streamBitRate, kHighBitRate)
              .audio(facts.audioClass, {kAudioClassAacStereo})
              .hold()) {
        naming.primary() += "HP_HD_AAC";
      }
      return;
    case kMain:
      return nameMainInMp4(naming);
    case kBaseline:
    case kConstrainedBaseline:
      return nameBaselineInMp4(naming);
    default:
      naming.primary().clear();
  }
}

enum class FrameRateTest { kNone, k50Hz, k60Hz };

// The frame rates as the rules see them. TICKS is the rate's numerator by the time base's
// denominator, an integer quotient and so mostly 0; the names in use depend on it.
struct FrameRate {
  int perSecond;
  int ticks;
};

FrameRateTest frameRateTest(const DlnaFacts& facts, const FrameRate& rate) {
  const bool isFullHd = (facts.width == 1440 || facts.width == 1920) && facts.height == 1080;
  const bool is60 = rate.perSecond == 59;
  if (isFullHd && rate.ticks != 0 && is60) return FrameRateTest::k60Hz;
  if (facts.width == 720 && facts.height == 480)
    return rate.ticks != 0 && is60 ? FrameRateTest::k60Hz : FrameRateTest::kNone;
  if (facts.width == 1280 && facts.height == 720)
    return rate.ticks == 0 && is60 ? FrameRateTest::k60Hz : FrameRateTest::k50Hz;
  if (isFullHd || (facts.width == 720 && facts.height == 576)) return FrameRateTest::k50Hz;
  return FrameRateTest::kNone;
}

std::string_view frameRatePiece(const Naming& naming) {
  const DlnaFacts& facts = naming.facts;
  const FrameRate rate = {quotient(facts.realFrameRate.num, facts.realFrameRate.den),
                          quotient(facts.realFrameRate.num, facts.timeBaseDen)};
  switch (frameRateTest(facts, rate)) {
    case FrameRateTest::kNone:
      return "";
    case FrameRateTest::k60Hz:
      return naming.candidate("AVC_TS_HD_60")
                     .oneOf("profile", facts.profile, {kHigh, kMain})
                     .audio(facts.audioClass, {kAudioClassAc3})
                     .hold()
                 ? "HD_60_"
                 : "";
    case FrameRateTest::k50Hz:
      return naming.candidate("AVC_TS_HD_50")
                     .exactly("frames per second", rate.perSecond, 50)
                     .that(rate.ticks != 0, "frame rate in time base units",
                           rate.ticks != 0 ? "yes" : "no")
                     .oneOf("profile", facts.profile, {kHigh, kMain})
                     .audio(facts.audioClass, {kAudioClassAc3})
                     .hold()
                 ? "HD_50_"
                 : "";
  }
  return "";
}

// False when no form of the main profile fits.
bool appendMainForm(Naming& naming) {
  const DlnaFacts& facts = naming.facts;
  naming.primary() += "MP_";
  if (naming.candidate("AVC_TS_MP_SD")
          .frame(facts, 720, 576)
          .atMost("video bit rate", facts.streamBitRate, 10000000)
          .hold()) {
    naming.primary() += "SD_";
    return true;
  }
  if (naming.candidate("AVC_TS_MP_HD")
          .frame(facts, 1920, 1152)
          .atMost("video bit rate", facts.streamBitRate, 20000000)
          .hold()) {
    naming.primary() += "HD_";
    return true;
  }
  return false;
}

bool appendBaselineForm(Naming& naming) {
  const DlnaFacts& facts = naming.facts;
  naming.primary() += "BL_";
  if (naming.candidate("AVC_TS_BL_CIF15")
          .frame(facts, 352, 288)
          .atMost("video bit rate", facts.streamBitRate, 384000)
          .hold()) {
    naming.primary() += "CIF15_";
    return true;
  }
  if (naming.candidate("AVC_TS_BL_CIF30")
          .frame(facts, 352, 288)
          .atMost("video bit rate", facts.streamBitRate, 3000000)
          .hold()) {
    naming.primary() += "CIF30_";
    return true;
  }
  // "BL_" stays in front of the main form; such streams have been named so from the beginning.
  return appendMainForm(naming);
}

bool appendHighForm(Naming& naming) {
  const DlnaFacts& facts = naming.facts;
  naming.primary() += "HP_HD_";
  return naming.candidate("AVC_TS_HP_HD")
      .frame(facts, 1920, 1152)
      .atMost("video bit rate", facts.streamBitRate, 30000000)
      .audio(facts.audioClass, {kAudioClassAc3})
      .hold();
}

bool appendProfileForm(Naming& naming) {
  switch (naming.facts.profile) {
    case kBaseline:
      return appendBaselineForm(naming);
    case kMain:
    case kConstrainedBaseline:
      return appendMainForm(naming);
    case kHigh:
      return appendHighForm(naming);
    default:
      return true;
  }
}

bool appendTransportAudio(Naming& naming) {
  const std::string_view suffix = sdAudioSuffix(naming.facts.audioClass);
  if (!naming.candidate("AVC_TS with audio")
           .audio(naming.facts.audioClass, {kAudioClassAc3, kAudioClassAacStereo,
                                            kAudioClassAacMultichannel, kAudioClassMp3})
           .hold()) {
    return false;
  }
  naming.primary() += suffix.substr(1);
  return true;
}

bool appendPackets(Naming& naming, const TransportPackets& packets, int profile) {
  if (packets.size == 192) {
    if (packets.isTimeStamped || profile == kHigh) naming.primary() += "_T";
    naming.name.mimeType = kTimeStampedMimeType;
    return true;
  }
  const std::string size = std::to_string(packets.size);
  if (!naming.candidate("AVC_TS with packets")
           .that(packets.size == 188, "packets of 188 or 192 bytes", size)
           .hold()) {
    return false;
  }
  naming.primary() += "_ISO";
  return true;
}

void nameInTransportStream(Naming& naming) {
  const TransportPackets packets = naming.readPackets();
  naming.primary() += "TS_";
  int profile = naming.facts.profile;
  const std::string_view piece = frameRatePiece(naming);
  bool named = true;
  if (!piece.empty()) {
    naming.primary() += piece;
    profile = kNamedByFrameRate;
  } else {
    named = appendProfileForm(naming);
  }
  named = named && appendTransportAudio(naming) && appendPackets(naming, packets, profile);
  if (!named) naming.primary().clear();
}

}  // namespace

void nameH264(Naming& naming) {
  const DlnaFacts& facts = naming.facts;
  if (isTaggedAvc1(facts.codecTag)) naming.name.playException = PLAY_EXCEPTION_H264_AVC1;
  naming.primary() = "AVC_";
  if (facts.demuxer == av::kDemuxerMpegTs)
    nameInTransportStream(naming);
  else if (facts.demuxer == av::kDemuxerMp4)
    nameInMp4(naming);
  else
    naming.primary().clear();
}

}  // namespace kolum::video
