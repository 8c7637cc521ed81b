// The rules for WMV3 and VC-1 video.
#include <kolum/identifiers.h>

#include <algorithm>
#include <array>

#include "base/bytes.h"
#include "dlna/rules.h"
#include "media/container.h"

namespace kolum::dlna {

namespace {

constexpr int kSimpleProfile = 0;

struct AudioSuffix {
  std::int64_t audioClass;
  std::string_view suffix;
};

constexpr auto kSuffixes = std::to_array<AudioSuffix>({
    {AUDIO_CLASS_WMA_BASE, "BASE"},
    {AUDIO_CLASS_WMA_FULL, "FULL"},
    {AUDIO_CLASS_WMA_PRO, "PRO"},
    {AUDIO_CLASS_MP3, "MP3"},
});

constexpr std::int64_t kBase[] = {AUDIO_CLASS_WMA_BASE};
constexpr std::int64_t kBaseOrMp3[] = {AUDIO_CLASS_WMA_BASE, AUDIO_CLASS_MP3};
constexpr std::int64_t kBaseToPro[] = {AUDIO_CLASS_WMA_BASE, AUDIO_CLASS_WMA_FULL,
                                       AUDIO_CLASS_WMA_PRO};
// Base audio has no name at the high level.
constexpr std::int64_t kFullOrPro[] = {AUDIO_CLASS_WMA_FULL, AUDIO_CLASS_WMA_PRO};

// The first tier whose video tests hold decides, even if it then rejects the audio.
struct Tier {
  std::string_view name;
  bool needsSimpleProfile;
  int width;
  int height;
  std::int64_t bitRate;
  std::span<const std::int64_t> audio;
};

constexpr auto kTiers = std::to_array<Tier>({
    {"WMVSPLL_", true, 176, 144, 96000, kBase},
    {"WMVSPML_", true, 352, 288, 384000, kBaseOrMp3},
    {"WMVMED_", false, 720, 576, 10000000, kBaseToPro},
    {"WMVHIGH_", false, 1920, 1080, 20000000, kFullOrPro},
});

std::string_view suffixOf(std::int64_t audioClass) {
  const auto row = std::find_if(kSuffixes.begin(), kSuffixes.end(),
                                [&](const AudioSuffix& r) { return r.audioClass == audioClass; });
  return row != kSuffixes.end() ? row->suffix : "";
}

// The suffix of the file's audio, or else of the first that the tier allows.
std::string_view suffixIn(const Tier& tier, unsigned audioClass) {
  const auto fits = std::find(tier.audio.begin(), tier.audio.end(), audioClass);
  return suffixOf(fits != tier.audio.end() ? *fits : tier.audio.front());
}

// If FFmpeg reports no profile, the top two bits of the sequence header hold it.
int wmv3Profile(const DlnaFacts& facts) {
  if (facts.profile == media::kUnknownLevel && !facts.extraData.empty())
    return static_cast<int>(BitReader(facts.extraData).bits(2));
  return facts.profile;
}

Quantity simpleProfile(bool isSimple) {
  return {"", isSimple ? 1 : 0, [](std::int64_t held) -> std::string {
            return held != 0 ? "WMV3 of the Simple profile" : "another";
          }};
}

}  // namespace

void nameWindowsMedia(Naming& naming) {
  const DlnaFacts& facts = naming.facts;
  if (facts.demuxer != media::kDemuxerAsf)
    return naming.remark("WMV3 and VC-1 video have names in ASF files only");
  naming.name.mimeType = "video/x-ms-wmv";
  // ASF headers without extended properties have no stream rate.
  const Quantity rate = facts.streamBitRate > 0 ? videoBitRate(facts.streamBitRate)
                                                : overallBitRate(facts.containerBitRate);
  const bool isSimple = facts.codec == CODEC_ID_WMV3 && wmv3Profile(facts) == kSimpleProfile;
  for (const Tier& tier : kTiers) {
    const std::string_view suffix = suffixIn(tier, facts.audioClass);
    Tests tests = naming.candidate({tier.name, suffix});
    if (tier.needsSimpleProfile)
      tests.that(isSimple, "WMV3 of the Simple profile", simpleProfile(isSimple));
    tests.frame(facts, tier.width, tier.height).atMost(rate, tier.bitRate);
    const bool decides = tests.held();
    if (tests.oneOf(audio(facts), tier.audio).take())
      naming.primary() = std::string(tier.name) + std::string(suffix);
    if (decides) return;
  }
}

}  // namespace kolum::dlna
