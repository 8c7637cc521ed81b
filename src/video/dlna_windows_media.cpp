// The rules for WMV3 and VC-1 video.
#include <kolum/identifiers.h>

#include <array>

#include "video/dlna_rules.h"

namespace kolum::video {

namespace {

constexpr int kSimpleProfile = 0;
constexpr int kUnknownProfile = -99;

struct AudioSuffix {
  unsigned audioClass;
  std::string_view suffix;
};

constexpr auto kSimpleLowSuffixes = std::to_array<AudioSuffix>({{kAudioClassWmaBase, "BASE"}});
constexpr auto kSimpleMediumSuffixes = std::to_array<AudioSuffix>({
    {kAudioClassWmaBase, "BASE"},
    {kAudioClassMp3, "MP3"},
});
constexpr auto kMainMediumSuffixes = std::to_array<AudioSuffix>({
    {kAudioClassWmaBase, "BASE"},
    {kAudioClassWmaFull, "FULL"},
    {kAudioClassWmaPro, "PRO"},
});
// Base audio has no name at the high level.
constexpr auto kMainHighSuffixes = std::to_array<AudioSuffix>({
    {kAudioClassWmaFull, "FULL"},
    {kAudioClassWmaPro, "PRO"},
});

// The first tier whose video tests hold decides, also when the audio then finds no suffix.
struct Tier {
  std::string_view name;
  bool needsSimpleProfile;
  int width;
  int height;
  std::int64_t bitRate;
  std::span<const AudioSuffix> suffixes;
};

constexpr auto kTiers = std::to_array<Tier>({
    {"WMVSPLL_", true, 176, 144, 96000, kSimpleLowSuffixes},
    {"WMVSPML_", true, 352, 288, 384000, kSimpleMediumSuffixes},
    {"WMVMED_", false, 720, 576, 10000000, kMainMediumSuffixes},
    {"WMVHIGH_", false, 1920, 1080, 20000000, kMainHighSuffixes},
});

// Where FFmpeg tells no profile, the sequence header does, in its top two bits.
int wmv3Profile(const DlnaFacts& facts) {
  constexpr int kProfileShift = 6;
  if (facts.profile == kUnknownProfile && !facts.extraData.empty())
    return facts.extraData.front() >> kProfileShift;
  return facts.profile;
}

bool fits(const Naming& naming, const Tier& tier) {
  const DlnaFacts& facts = naming.facts;
  // ASF headers without extended properties tell no stream rate.
  const std::int64_t rate = facts.streamBitRate > 0 ? facts.streamBitRate : facts.containerBitRate;
  Tests tests = naming.candidate(tier.name);
  if (tier.needsSimpleProfile) {
    const bool isSimple = facts.codec == CODEC_ID_WMV3 && wmv3Profile(facts) == kSimpleProfile;
    tests.that(isSimple, "WMV3 of the Simple profile", isSimple ? "yes" : "no");
  }
  return tests.frame(facts, tier.width, tier.height).atMost("bit rate", rate, tier.bitRate).hold();
}

}  // namespace

void nameWindowsMedia(Naming& naming) {
  if (naming.facts.demuxer != av::kDemuxerAsf) return;
  naming.name.mimeType = "video/x-ms-wmv";
  const auto tier = std::find_if(kTiers.begin(), kTiers.end(),
                                 [&](const Tier& candidate) { return fits(naming, candidate); });
  if (tier == kTiers.end()) return;
  for (const AudioSuffix& row : tier->suffixes) {
    const std::string name = std::string(tier->name) + std::string(row.suffix);
    if (!naming.candidate(name).audio(naming.facts.audioClass, {row.audioClass}).hold()) continue;
    naming.primary() = name;
    return;
  }
}

}  // namespace kolum::video
