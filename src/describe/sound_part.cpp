#include <kolum/identifiers.h>

#include "describe/names.h"
#include "describe/parts.h"
#include "describe/table.h"
#include "dlna/audio_class.h"

namespace kolum::describe {

namespace {

// The first sound of a video, or a song.
struct Sound {
  std::optional<int> codec;
  std::optional<int> profile;
  std::optional<unsigned> audioClass;
  std::optional<int> level;
  std::int64_t bitRate = 0;
  std::int64_t sampleRate = 0;
  std::int64_t bitsPerSample = 0;
  std::int64_t channels = 0;
};

Sound soundOf(const probe::VideoFacts& video) {
  if (!video.audioCodec) return {};
  return {.codec = video.audioCodec,
          .profile = video.audioProfile,
          .audioClass = video.audioClass,
          .level = video.audioLevel,
          .bitRate = video.audioBitRate.value_or(0),
          .sampleRate = video.sampleRate.value_or(0),
          .bitsPerSample = video.bitsPerSample.value_or(0),
          .channels = video.channels.value_or(0)};
}

Sound soundOf(const Song& song) {
  return {.codec = song.codec,
          .profile = song.codec ? song.profile : std::nullopt,
          .audioClass = std::nullopt,
          .level = song.level,
          .bitRate = static_cast<std::int64_t>(song.bitRate),
          .sampleRate = static_cast<std::int64_t>(song.sampleRate),
          .bitsPerSample = static_cast<std::int64_t>(song.bitsPerSample),
          .channels = static_cast<std::int64_t>(song.channels)};
}

constexpr auto kSoundRows = std::to_array<Row<Sound>>({
    {{"audioCodec", Type::kIdentifier, Unit::kNone, "CODEC_ID_*", "the first sound"},
     [](const Sound& s) { return s.codec ? identifier(*s.codec, codecName(*s.codec)) : Value(); }},
    {{"audioProfile", Type::kIdentifier, Unit::kNone,
      "PROFILE_*, by the name specific to the codec where there is one", "the first sound"},
     [](const Sound& s) -> Value {
       if (s.profile.value_or(PROFILE_UNKNOWN) == PROFILE_UNKNOWN) return nullptr;
       return identifier(*s.profile, profileName(*s.profile, *s.codec));
     }},
    {{"audioClass", Type::kIdentifier, Unit::kNone,
      "AUDIO_CLASS_*, the class of audio in DLNA names", "the first sound of a video"},
     [](const Sound& s) -> Value {
       if (!s.audioClass) return nullptr;
       return identifier(*s.audioClass, dlna::audioClassName(*s.audioClass));
     }},
    {{"audioLevel", Type::kInteger, Unit::kNone, "FFmpeg's level number", "the first sound"},
     [](const Sound& s) -> Value {
       if (s.level.value_or(LEVEL_UNKNOWN) == LEVEL_UNKNOWN) return nullptr;
       return *s.level;
     }},
    {{"audioBitRate", Type::kInteger, Unit::kBitsPerSecond, "Of the sound", "the first sound"},
     [](const Sound& s) { return positive(s.bitRate); }},
    {{"sampleRate", Type::kInteger, Unit::kHertz, "Samples per second", "the first sound"},
     [](const Sound& s) { return positive(s.sampleRate); }},
    {{"bitsPerSample", Type::kInteger, Unit::kCount,
      "Bits per coded sample, or per sample of lossless sound", "the first sound"},
     [](const Sound& s) { return positive(s.bitsPerSample); }},
    {{"channels", Type::kInteger, Unit::kCount, "Number of audio channels", "the first sound"},
     [](const Sound& s) { return positive(s.channels); }},
});

constexpr auto kKeys = keysOf(kSoundRows);

}  // namespace

Part soundPart() {
  return {{"sound", "Sound", kKeys}, [](Value& object, const Document& document) {
            if (document.video) add(object, kSoundRows, soundOf(*document.video));
            if (document.song) add(object, kSoundRows, soundOf(*document.song));
          }};
}

}  // namespace kolum::describe
