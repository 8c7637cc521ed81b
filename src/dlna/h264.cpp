// The rules for H.264 video.
#include <kolum/identifiers.h>

#include <array>
#include <cstdio>

#include "base/text.h"
#include "dlna/rules.h"
#include "media/container.h"

namespace kolum::dlna {

namespace {

// FFmpeg's profile numbers.
constexpr int kBaseline = 66;
constexpr int kConstrainedBaseline = 578;
constexpr int kMain = 77;
constexpr int kHigh = 100;

// The audio classes that a name allows.
constexpr std::int64_t kAc3[] = {AUDIO_CLASS_AC3};
constexpr std::int64_t kAacStereo[] = {AUDIO_CLASS_AAC_STEREO};
constexpr std::int64_t kTransportAudio[] = {AUDIO_CLASS_AC3, AUDIO_CLASS_AAC_STEREO,
                                            AUDIO_CLASS_AAC_MULTICHANNEL, AUDIO_CLASS_MP3};
constexpr std::span<const std::int64_t> kAnyAudio = {};

constexpr int kAnySize = 0;

// Part of a name, with the limits for a stream. The bit rate is the video stream's.
struct Form {
  std::string_view piece;
  int width;
  int height;
  std::int64_t bitRate;
  std::span<const std::int64_t> audio;
};

bool isTaggedAvc1(std::uint32_t tag) {
  std::string text;
  for (int shift = 0; shift < 32; shift += 8) text += static_cast<char>(tag >> shift & 0xFF);
  return equalsIgnoringCase(text, "avc1");
}

// "AC3", "AAC_MULT5" or "MPEG1_L3"; empty for other audio.
std::string_view audioSuffix(unsigned audioClass) {
  switch (audioClass) {
    case AUDIO_CLASS_AC3:
      return "AC3";
    case AUDIO_CLASS_AAC_STEREO:
    case AUDIO_CLASS_AAC_MULTICHANNEL:
      return "AAC_MULT5";
    case AUDIO_CLASS_MP3:
      return "MPEG1_L3";
    default:
      return "";
  }
}

Tests testsOf(const Naming& naming, std::string_view prefix, const Form& form,
              std::string_view suffix) {
  const DlnaFacts& facts = naming.facts;
  Tests tests = naming.candidate({prefix, form.piece, suffix});
  if (form.width != kAnySize)
    tests.frame(facts, form.width, form.height)
        .atMost(videoBitRate(facts.streamBitRate), form.bitRate);
  if (!form.audio.empty()) tests.oneOf(audio(facts), form.audio);
  return tests;
}

// --- In MP4

constexpr std::string_view kMp4Prefix = "AVC_MP4_";

constexpr Form kHighInMp4 = {"HP_HD_AAC", 1920, 1080, 25000000, kAacStereo};

constexpr Form kMainSdInMp4 = {"MP_SD", 720, 576, 10000000, kAnyAudio};
// The last row also takes 720-line streams whose bit rate is too high for their own name; renderers
// expect it.
constexpr auto kMainHdInMp4 = std::to_array<Form>({
    {"MP_HD_720p_AAC", 1280, 720, 15000000, kAacStereo},
    {"MP_HD_1080i_AAC", 1920, 1080, 21000000, kAacStereo},
});

void nameHighInMp4(Naming& naming) {
  naming.primary() = kMp4Prefix;
  if (testsOf(naming, kMp4Prefix, kHighInMp4, "").take())
    naming.primary() += kHighInMp4.piece;
  else  // Kept: renderers match by the beginning of the name.
    naming.remark("AVC_MP4_ alone stays for streams of the High profile that no name fits");
}

void nameMainInMp4(Naming& naming) {
  // A name of at most this length is incomplete, such as "AVC_MP4_MP_".
  constexpr std::size_t kLongestFragment = 11;
  std::string& primary = naming.primary();
  primary = "AVC_MP4_MP_";
  static_assert(std::string_view("AVC_MP4_MP_").size() == kLongestFragment);

  const std::string_view suffix = audioSuffix(naming.facts.audioClass);
  const std::string_view joint = suffix.empty() ? "" : "_";
  std::string sdSuffix(joint);
  sdSuffix += suffix;
  if (testsOf(naming, kMp4Prefix, kMainSdInMp4, sdSuffix).take()) {
    primary = kMp4Prefix;
    primary += kMainSdInMp4.piece;
    primary += sdSuffix;
  } else {
    for (const Form& form : kMainHdInMp4) {
      if (!testsOf(naming, kMp4Prefix, form, "").take()) continue;
      primary = kMp4Prefix;
      primary += form.piece;
      break;
    }
  }
  if (primary.size() <= kLongestFragment) primary.clear();
}

// A name for the Baseline profile; levels are FFmpeg's, the bit rate is that of the whole file.
struct BaselineRow {
  std::string_view piece;
  std::string_view suffix;
  int lowestLevel;
  int highestLevel;
  std::int64_t bitRate;
  unsigned audioClass;
};

constexpr int kAnyLevel = 0;

constexpr auto kBaselineCif = std::to_array<BaselineRow>({
    {"BL_CIF15_", "AAC_520", kAnyLevel, kAnyLevel, 519999, AUDIO_CLASS_AAC_STEREO},
    {"BL_CIF15_", "AAC_940", kAnyLevel, kAnyLevel, 599999, AUDIO_CLASS_AAC_STEREO},
    {"BL_CIF15_", "AMR", kAnyLevel, kAnyLevel, 599999, AUDIO_CLASS_AMR},
    {"BL_CIF30_", "AAC_940", kAnyLevel, kAnyLevel, 939999, AUDIO_CLASS_AAC_STEREO},
    {"BL_CIF30_", "AMR", kAnyLevel, kAnyLevel, 4999999, AUDIO_CLASS_AMR},
});

constexpr auto kBaselineSd = std::to_array<BaselineRow>({
    {"BL_L3L_SD_", "AAC", 30, 30, 5000000, AUDIO_CLASS_AAC_STEREO},
    {"BL_L31_HD_", "AAC", kAnyLevel, 31, 15000000, AUDIO_CLASS_AAC_STEREO},
});

constexpr auto kBaselineHd = std::to_array<BaselineRow>({
    {"BL_L31_HD_", "AAC", kAnyLevel, 31, 15000000, AUDIO_CLASS_AAC_STEREO},
    {"BL_L32_HD_", "AAC", kAnyLevel, 32, 21000000, AUDIO_CLASS_AAC_STEREO},
});

// The rows for frames up to this size; only the first group that fits a frame is tried.
struct BaselineGroup {
  int width;
  int height;
  std::span<const BaselineRow> rows;
  bool printsCarets;
};

constexpr auto kBaselineGroups = std::to_array<BaselineGroup>({
    {352, 288, kBaselineCif, false},
    {720, 576, kBaselineSd, false},
    {1280, 720, kBaselineHd, true},
});

Tests videoTestsOf(const Naming& naming, const BaselineGroup& group, const BaselineRow& row) {
  const DlnaFacts& facts = naming.facts;
  Tests tests = naming.candidate({kMp4Prefix, row.piece, row.suffix});
  tests.frame(facts, group.width, group.height);
  if (row.lowestLevel != kAnyLevel) tests.atLeast(h264Level(facts.level), row.lowestLevel);
  if (row.highestLevel != kAnyLevel) tests.atMost(h264Level(facts.level), row.highestLevel);
  tests.atMost(overallBitRate(facts.containerBitRate), row.bitRate);
  return tests;
}

// False if no row fits.
bool nameByBaselineGroup(Naming& naming, const BaselineGroup& group) {
  // Hosts' logs contain these lines.
  if (group.printsCarets) naming.output("^^^^^^^^^^^^^^^^\n^^^^^^^^^^^^^^^^\n");
  std::string_view piece;
  bool named = false;
  for (const BaselineRow& row : group.rows) {
    Tests tests = videoTestsOf(naming, group, row);
    // The first piece whose video limits hold is printed, even if the audio fits no row.
    if (piece.empty() && tests.held()) piece = row.piece;
    named = tests.oneOf(audio(naming.facts), {row.audioClass}).take();
    if (!named) continue;
    naming.primary() = kMp4Prefix;
    naming.primary() += row.piece;
    naming.primary() += row.suffix;
    break;
  }
  if (!piece.empty()) naming.output("1. dlnaProfile_:" + std::string(piece) + " %%%%\n");
  return named;
}

const BaselineGroup* baselineGroupOf(const DlnaFacts& facts) {
  for (const BaselineGroup& group : kBaselineGroups)
    if (facts.width <= group.width && facts.height <= group.height) return &group;
  // Higher frames get the last group, which still prints its debug lines although no row fits.
  return facts.width <= kBaselineGroups.back().width ? &kBaselineGroups.back() : nullptr;
}

void nameBaselineInMp4(Naming& naming) {
  const BaselineGroup* group = baselineGroupOf(naming.facts);
  if (group == nullptr || !nameByBaselineGroup(naming, *group)) nameMainInMp4(naming);
}

void nameInMp4(Naming& naming) {
  switch (naming.facts.profile) {
    case kHigh:
      return nameHighInMp4(naming);
    case kMain:
      return nameMainInMp4(naming);
    case kBaseline:
    case kConstrainedBaseline:
      return nameBaselineInMp4(naming);
    default:
      naming.remark("of H.264, only the Baseline, Main and High profiles have names in MP4");
  }
}

// --- In transport streams

constexpr std::string_view kTransportPrefix = "AVC_TS_";

// A stream that fits no Baseline form keeps the prefix "BL_" before the main form: such streams
// have always been named so.
constexpr auto kBaselineForms = std::to_array<Form>({
    {"BL_CIF15_", 352, 288, 384000, kTransportAudio},
    {"BL_CIF30_", 352, 288, 3000000, kTransportAudio},
    {"BL_MP_SD_", 720, 576, 10000000, kTransportAudio},
    {"BL_MP_HD_", 1920, 1152, 20000000, kTransportAudio},
});

constexpr auto kMainForms = std::to_array<Form>({
    {"MP_SD_", 720, 576, 10000000, kTransportAudio},
    {"MP_HD_", 1920, 1152, 20000000, kTransportAudio},
});

constexpr auto kHighForms = std::to_array<Form>({
    {"HP_HD_", 1920, 1152, 30000000, kAc3},
});

// Other profiles are named only by their audio.
constexpr auto kOtherForms = std::to_array<Form>({
    {"", kAnySize, kAnySize, 0, kTransportAudio},
});

std::span<const Form> transportForms(int profile) {
  switch (profile) {
    case kBaseline:
      return kBaselineForms;
    case kMain:
    case kConstrainedBaseline:
      return kMainForms;
    case kHigh:
      return kHighForms;
    default:
      return kOtherForms;
  }
}

// Every name requires a known packet size.
bool take(Tests& tests, const TransportPackets& packets) {
  return tests.oneOf(packetSize(packets), {TS_PACKET_PLAIN, TS_PACKET_STAMPED}).take();
}

enum class FrameRateTest { kNone, k50Hz, k60Hz };

// True if the rate's numerator reaches the denominator of the stream's time base, which few streams
// do. Stored names depend on it.
bool countsInClockTicks(const DlnaFacts& facts) {
  return quotient(facts.realFrameRate.num, facts.timeBaseDen) != 0;
}

FrameRateTest frameRateTest(const DlnaFacts& facts) {
  const bool inTicks = countsInClockTicks(facts);
  const bool is60 = frameRate(facts).value == 59;
  const bool isFullHd = (facts.width == 1440 || facts.width == 1920) && facts.height == 1080;
  if (isFullHd && inTicks && is60) return FrameRateTest::k60Hz;
  if (facts.width == 720 && facts.height == 480)
    return inTicks && is60 ? FrameRateTest::k60Hz : FrameRateTest::kNone;
  // Intentionally inverted: stored names depend on it.
  if (facts.width == 1280 && facts.height == 720)
    return !inTicks && is60 ? FrameRateTest::k60Hz : FrameRateTest::k50Hz;
  if (isFullHd || (facts.width == 720 && facts.height == 576)) return FrameRateTest::k50Hz;
  return FrameRateTest::kNone;
}

Quantity clockTicks(const DlnaFacts& facts) {
  return {"", facts.timeBaseDen,
          [](std::int64_t ticks) { return std::to_string(ticks) + " ticks per second"; }};
}

bool fits60Hz(const Naming& naming, const TransportPackets& packets) {
  const DlnaFacts& facts = naming.facts;
  Tests tests = naming.candidate({kTransportPrefix, "HD_60_AC3"});
  tests.oneOf(h264Profile(facts.profile), {kHigh, kMain}).oneOf(audio(facts), kAc3);
  return take(tests, packets);
}

bool fits50Hz(const Naming& naming, const TransportPackets& packets) {
  const DlnaFacts& facts = naming.facts;
  Tests tests = naming.candidate({kTransportPrefix, "HD_50_AC3"});
  tests.oneOf(frameRate(facts), {50})
      .that(countsInClockTicks(facts), "numerator of the frame rate reaching the stream's clock",
            clockTicks(facts))
      .oneOf(h264Profile(facts.profile), {kHigh, kMain})
      .oneOf(audio(facts), kAc3);
  return take(tests, packets);
}

// The part of a name that follows from the frame rate; empty if there is none.
std::string_view frameRatePiece(const Naming& naming, const TransportPackets& packets) {
  switch (frameRateTest(naming.facts)) {
    case FrameRateTest::k60Hz:
      return fits60Hz(naming, packets) ? "HD_60_" : "";
    case FrameRateTest::k50Hz:
      return fits50Hz(naming, packets) ? "HD_50_" : "";
    case FrameRateTest::kNone:
      break;
  }
  return "";
}

void writeTransportName(Naming& naming, std::string_view piece, const TransportPackets& packets,
                        bool isHigh) {
  std::string& primary = naming.primary();
  primary = kTransportPrefix;
  primary += piece;
  primary += audioSuffix(naming.facts.audioClass);
  if (packets.size == TS_PACKET_PLAIN) {
    primary += "_ISO";
    return;
  }
  // High profile streams count as time-stamped whatever their stamps.
  if (packets.isTimeStamped || isHigh) primary += "_T";
  naming.name.mimeType = kTimeStampedMimeType;
}

void nameInTransportStream(Naming& naming) {
  const DlnaFacts& facts = naming.facts;
  const TransportPackets packets = naming.readPackets();
  const std::string_view piece = frameRatePiece(naming, packets);
  // A stream named by its frame rate no longer counts as High profile.
  if (!piece.empty()) return writeTransportName(naming, piece, packets, false);
  for (const Form& form : transportForms(facts.profile)) {
    Tests tests = testsOf(naming, kTransportPrefix, form, audioSuffix(facts.audioClass));
    if (!take(tests, packets)) continue;
    return writeTransportName(naming, form.piece, packets, facts.profile == kHigh);
  }
}

}  // namespace

void nameH264(Naming& naming) {
  const DlnaFacts& facts = naming.facts;
  if (isTaggedAvc1(facts.codecTag)) naming.name.playException = PLAY_EXCEPTION_H264_AVC1;
  if (facts.demuxer == media::kDemuxerMpegTs)
    nameInTransportStream(naming);
  else if (facts.demuxer == media::kDemuxerMp4)
    nameInMp4(naming);
  else
    naming.remark("H.264 video has names in MP4 files and MPEG transport streams only");
}

}  // namespace kolum::dlna
