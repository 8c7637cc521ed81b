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

void addKnown(Result& result, const char* key, std::uint32_t value) {
  if (value != kUnset && value != 0) result.data(key, value);
}

// DSD songs tell their bit rate in kbit/s.
std::uint64_t bitRateOf(const Song& song) {
  if (song.bitRate == kUnset) return 0;
  return song.isDsd() ? std::uint64_t{song.bitRate} * 1000 : song.bitRate;
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
  const std::uint64_t bitRate = bitRateOf(song);
  if (bitRate != 0) result.data("audioBitRate", bitRate);
  addKnown(result, "sampleRate", song.sampleRate);
  addKnown(result, "bitsPerSample", song.bitsPerSample);
  addKnown(result, "channels", song.channels);
  const auto known = [](std::uint32_t value) { return value != kUnset && value != 0; };
  result.show(
      "Audio",
      joined({codec, known(song.sampleRate) ? frequencyText(song.sampleRate) : "",
              known(song.channels) ? counted(song.channels, "channel") : "",
              known(song.bitsPerSample) ? counted(song.bitsPerSample, "bit") + "/sample" : "",
              bitRate != 0 ? bitRateText(bitRate) : ""}));
}

}  // namespace

void probeAudio(Context& context, const MediaPath& path, const ProbeOptions&) {
  // A tool reads DSD songs, so the library has to know where it is.
  if (isDsdName(path.name) && !context.initLibrary()) return;
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
  if (song.containerBitRate != kUnset && song.containerBitRate != 0) {
    result.bitRate("bitRate", "Bit rate", song.containerBitRate);
  }
  addStream(result, song);
  context.printer.block(result);
}

}  // namespace kolum::tool
