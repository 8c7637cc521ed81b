#include <kolum/audio.h>
#include <kolum/identifiers.h>

#include <cstdint>

#include "file_types.h"
#include "identifiers.h"
#include "media_files.h"
#include "probe.h"
#include "text.h"

namespace kolum::tool {

namespace {

// Outputs that the library finds no value for keep what they start with.
constexpr std::uint32_t kUnset = UINT32_MAX;

struct Song {
  std::uint32_t containerBitRate = kUnset;
  std::uint32_t bitRate = kUnset;
  std::uint32_t sampleRate = kUnset;
  std::uint32_t bitsPerSample = kUnset;
  std::uint32_t channels = kUnset;
  std::uint32_t duration = kUnset;
  std::uint32_t containerFormat = kUnset;  // also the library's own "no number"
  std::uint32_t codec = kUnset;
  std::int32_t profile = PROFILE_UNKNOWN;
  std::int32_t level = kUnknownLevel;
  char dlnaProfile[64] = "";

  bool isDsd() const { return containerFormat == FORMAT_DSF || containerFormat == FORMAT_DFF; }
  bool isFound() const { return codec != kUnset || sampleRate != kUnset; }
};

bool read(const MediaPath& path, Song& song) {
  return GetAudioMetadata(path.folder.c_str(), path.name.c_str(), &song.containerBitRate,
                          &song.bitRate, &song.sampleRate, &song.bitsPerSample, &song.channels,
                          &song.duration, &song.containerFormat, &song.codec, &song.profile,
                          &song.level, song.dlnaProfile) == 0 &&
         song.isFound();
}

// A number of the song; 0 when it has none.
std::uint64_t known(std::uint32_t value) {
  return value == kUnset ? 0 : value;
}

// DSD songs tell their bit rate in kbit/s.
std::uint64_t bitRateOf(const Song& song) {
  return known(song.bitRate) * (song.isDsd() ? 1000 : 1);
}

void addStream(Result& result, const Song& song) {
  std::string codec;
  if (song.codec != kUnset) {
    const int number = static_cast<int>(song.codec);
    result.data("audioCodec", codecIdentifier(number).json());
    addProfile(result, "audioProfile", song.profile, number);
    codec = codecText(number, song.profile);
  }
  if (song.level != kUnknownLevel) result.data("audioLevel", song.level);
  const Sound sound = {.sampleRate = known(song.sampleRate),
                       .channels = known(song.channels),
                       .bitsPerSample = known(song.bitsPerSample),
                       .bitRate = bitRateOf(song)};
  addSound(result, sound);
  result.show("Audio", joined({codec, soundText(sound)}));
}

}  // namespace

void probeAudio(Context& context, const MediaPath& path, const ProbeOptions&) {
  // A tool reads DSD songs, so the library has to know where it is.
  if (isDsdName(path.name)) context.initLibrary();
  Song song;
  if (!read(path, song)) {
    return context.fail(path.given, refusalReason(path, "no song that can be probed"));
  }
  Result result = Result::ofFile(path.given);
  addKind(result, kMusic);
  if (song.containerFormat != kUnset) addContainer(result, song.containerFormat);
  addMimeTypeOfName(result, path.name, kMusicBit);
  result.text("dlnaProfile", "DLNA profile", song.dlnaProfile);
  if (song.duration != kUnset) result.duration("duration", "Duration", song.duration);
  if (const auto bitRate = known(song.containerBitRate); bitRate != 0)
    result.bitRate("bitRate", "Bit rate", bitRate);
  addStream(result, song);
  context.printer.block(result);
}

}  // namespace kolum::tool
