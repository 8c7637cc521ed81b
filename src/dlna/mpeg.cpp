// The rules for MPEG-1, MPEG-2 and MPEG-4 part 2 video.
#include <algorithm>
#include <array>

#include "base/text.h"
#include "dlna/rules.h"
#include "media/container.h"

namespace kolum::dlna {

namespace {

// --- MPEG-2

constexpr std::int64_t kPalHeights[] = {288, 576};

// Frame sizes and rates that Korean television also accepts; they give such files a second name.
struct KoreanHdRow {
  int width;
  int height;
  int framesPerSecond;
};

constexpr auto kKoreanHd = std::to_array<KoreanHdRow>({
    {1920, 1080, 29},
    {1280, 720, 59},
});

bool isKoreanHd(const Naming& naming) {
  const DlnaFacts& facts = naming.facts;
  const auto row = std::find_if(kKoreanHd.begin(), kKoreanHd.end(), [&](const KoreanHdRow& r) {
    return r.width == facts.width && r.height == facts.height;
  });
  return row != kKoreanHd.end() && naming.candidate({"MPEG_TS_HD_KO"})
                                       .oneOf(width(facts), {row->width})
                                       .oneOf(height(facts), {row->height})
                                       .atLeast(frameRate(facts), row->framesPerSecond)
                                       .take();
}

bool isKoreanSd(const Naming& naming) {
  return naming.candidate({"MPEG_TS_SD_KO"})
      .oneOf(width(naming.facts), {640, 704})
      .oneOf(height(naming.facts), {480})
      .take();
}

// What follows "MPEG_TS_": the general name, and the Korean one if there is one.
struct TransportPieces {
  std::string_view primary;
  std::string_view alternative;
};

TransportPieces transportPieces(const Naming& naming) {
  const DlnaFacts& facts = naming.facts;
  if (naming.candidate({"MPEG_TS_HD_NA"})
          .atLeast(width(facts), 1280)
          .atLeast(height(facts), 720)
          .take()) {
    return {"HD_NA", isKoreanHd(naming) ? "HD_KO" : ""};
  }
  if (naming.candidate({"MPEG_TS_SD_EU"}).oneOf(height(facts), kPalHeights).take())
    return {"SD_EU", ""};
  naming.candidate({"MPEG_TS_SD_NA"}).take();
  return {"SD_NA", isKoreanSd(naming) ? "SD_KO" : ""};
}

std::string joined(std::initializer_list<std::string_view> pieces) {
  std::string text;
  for (const std::string_view piece : pieces) text += piece;
  return text;
}

void nameMpeg2InTransportStream(Naming& naming) {
  constexpr std::string_view kPrefix = "MPEG_TS_";
  // Japanese television is recognised by its AAC alone; its name has neither packet suffix nor
  // alternative. It is explained only if it fits, because other files should not aim for it.
  if (naming.facts.audioClass == AUDIO_CLASS_AAC_OTHER) {
    naming.candidate({"MPEG_TS_JP_T"}).oneOf(audio(naming.facts), {AUDIO_CLASS_AAC_OTHER}).take();
    naming.primary() = "MPEG_TS_JP_T";
    return;
  }
  const TransportPackets packets = naming.readPackets();
  const TransportPieces pieces = transportPieces(naming);
  std::string primary = joined({kPrefix, pieces.primary});
  std::string_view suffix = "_ISO";
  naming.name.mimeType = "video/mpeg";
  if (packets.size == TS_PACKET_STAMPED) {
    suffix = packets.isTimeStamped ? "_T" : "";
    naming.name.mimeType = kTimeStampedMimeType;
  } else if (packets.size != TS_PACKET_PLAIN) {
    // Only the suffix remains as the name for packets of unknown size; renderers were tested with
    // it.
    primary.clear();
    naming.remark("packets of unknown size leave nothing of the name but its suffix");
  }
  naming.primary() = joined({primary, suffix});
  if (!pieces.alternative.empty())
    naming.primary() += joined({",", kPrefix, pieces.alternative, suffix});
}

void nameMpeg2InProgramStream(Naming& naming) {
  naming.name.mimeType = "video/mpeg";
  if (naming.candidate({"MPEG_PS_PAL"}).oneOf(height(naming.facts), kPalHeights).take()) {
    naming.primary() = "MPEG_PS_PAL";
    return;
  }
  naming.candidate({"MPEG_PS_NTSC"}).take();
  naming.primary() = "MPEG_PS_NTSC";
}

// --- MPEG-4 part 2 in MP4

constexpr std::int64_t kAny = INT64_MAX;

constexpr std::int64_t kSimple[] = {0, media::kUnknownLevel};
constexpr std::int64_t kAdvanced[] = {15};
constexpr std::int64_t kSimpleOrAdvanced[] = {0, 15, media::kUnknownLevel};

constexpr std::int64_t kPhoneLevels[] = {0, 1, 9, media::kUnknownLevel};
constexpr std::int64_t kVgaLevels[] = {0, 1, 2, 3, 4, 9, media::kUnknownLevel};
constexpr std::int64_t kAdvancedLevels[] = {0, 1, 2, 3, 4, 5, 7, media::kUnknownLevel};

// Tried from the first row on. Profiles and levels are FFmpeg's numbers; an empty list of levels
// allows any.
struct Mpeg4Row {
  std::string_view name;
  int width;
  int height;
  std::span<const std::int64_t> profiles;
  std::span<const std::int64_t> levels;
  std::int64_t videoBitRate;
  std::int64_t overallBitRate;
  unsigned audioClass;
};

// Short aliases keep each row on one line.
constexpr unsigned kAac = AUDIO_CLASS_AAC_STEREO;
constexpr unsigned kAmr = AUDIO_CLASS_AMR;

constexpr auto kPhoneRows = std::to_array<Mpeg4Row>({
    {"MPEG4_P2_3GPP_SP_L0B_AAC", 176, 144, kSimple, kPhoneLevels, 128000, kAny, kAac},
    {"MPEG4_P2_3GPP_SP_L0B_AMR", 176, 144, kSimple, kPhoneLevels, 128000, kAny, kAmr},
});

constexpr auto kMp4Rows = std::to_array<Mpeg4Row>({
    {"MPEG4_P2_MP4_ASP_AAC", 720, 576, kSimpleOrAdvanced, {}, kAny, 1000000, kAac},
    {"MPEG4_P2_MP4_ASP_AAC", 720, 576, kAdvanced, kAdvancedLevels, 8000000, kAny, kAac},
    {"MPEG4_P2_MP4_SP_VGA_AAC", 640, 480, kSimple, kVgaLevels, 3000000, 4000000, kAac},
});

bool fits(const Naming& naming, const Mpeg4Row& row) {
  const DlnaFacts& facts = naming.facts;
  Tests tests = naming.candidate({row.name});
  tests.frame(facts, row.width, row.height).oneOf(mpeg4Profile(facts.profile), row.profiles);
  if (!row.levels.empty()) tests.oneOf(mpeg4Level(facts.level), row.levels);
  if (row.videoBitRate != kAny) tests.atMost(videoBitRate(facts.streamBitRate), row.videoBitRate);
  if (row.overallBitRate != kAny)
    tests.atMost(overallBitRate(facts.containerBitRate), row.overallBitRate);
  return tests.oneOf(audio(facts), {row.audioClass}).take();
}

}  // namespace

void nameMpeg2(Naming& naming) {
  if (naming.facts.demuxer == media::kDemuxerMpegTs)
    nameMpeg2InTransportStream(naming);
  else if (naming.facts.demuxer == media::kDemuxerMpegPs)
    nameMpeg2InProgramStream(naming);
  else
    naming.remark("MPEG-2 video has names in MPEG transport and program streams only");
}

void nameMpeg4Part2(Naming& naming) {
  const DlnaFacts& facts = naming.facts;
  if (facts.demuxer != media::kDemuxerMp4)
    return naming.remark("MPEG-4 part 2 video has names in MP4 files only");
  const bool isPhone = endsWithIgnoringCase(facts.path, ".3gp");
  if (isPhone) naming.name.mimeType = "video/3gpp";
  const auto rows = isPhone ? std::span<const Mpeg4Row>(kPhoneRows) : std::span(kMp4Rows);
  const auto row =
      std::find_if(rows.begin(), rows.end(), [&](const Mpeg4Row& r) { return fits(naming, r); });
  if (row != rows.end()) naming.primary() = row->name;
}

void nameMpeg1(Naming& naming) {
  const DlnaFacts& facts = naming.facts;
  if (facts.demuxer != media::kDemuxerMpegPs)
    return naming.remark("MPEG-1 video has a name in MPEG program streams only");
  naming.name.mimeType = "video/mpeg";
  // The bit rate is not tested: a variable-rate stream's rate means nothing.
  if (naming.candidate({"MPEG1"})
          .oneOf(width(facts), {352})
          .oneOf(height(facts), {240, 288})
          .oneOf(audio(facts), {AUDIO_CLASS_MP2, AUDIO_CLASS_NONE})
          .take()) {
    naming.primary() = "MPEG1";
  }
}

}  // namespace kolum::dlna
