#include <cstdint>

#include "commands/probe.h"
#include "files/diagnosis.h"
#include "files/file_types.h"
#include "files/identifiers.h"
#include "files/media_files.h"
#include "files/song.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

// A number of the song; 0 if unknown.
std::uint64_t known(std::uint32_t value) {
  return value == Song::kUnset ? 0 : value;
}

// The library reports the bit rate of DSD songs in kbit/s.
std::uint64_t bitRateOf(const Song& song) {
  return known(song.bitRate) * (song.isDsd() ? 1000 : 1);
}

void addStream(Result& result, const Song& song) {
  std::string codec;
  if (song.codec != Song::kUnset) {
    const int number = static_cast<int>(song.codec);
    result.data("audioCodec", codecIdentifier(number));
    addProfile(result, "audioProfile", song.profile, number);
    codec = codecText(number, song.profile);
  }
  if (song.level != LEVEL_UNKNOWN) result.data("audioLevel", song.level);
  const Sound sound = {.sampleRate = known(song.sampleRate),
                       .channels = known(song.channels),
                       .bitsPerSample = known(song.bitsPerSample),
                       .bitRate = bitRateOf(song)};
  addSound(result, sound);
  result.show("Audio", joined({codec, soundText(sound)}));
}

}  // namespace

void probeAudio(Context& context, const MediaPath& path, const ProbeOptions&) {
  const auto song = readSong(path);
  if (!song) return context.fail(path.given, diagnose(path, Wanted::kSong));
  Result result = Result::ofFile(path.given);
  addKind(result, MEDIA_KIND_MUSIC);
  if (song->containerFormat != Song::kUnset) addContainer(result, song->containerFormat);
  addMimeTypeOfName(result, path.name, MEDIA_KIND_BIT_MUSIC);
  result.text("dlnaProfile", "DLNA profile", song->dlnaProfile);
  if (song->duration != Song::kUnset) result.duration("duration", "Duration", song->duration);
  if (const auto bitRate = known(song->containerBitRate); bitRate != 0)
    result.bitRate("bitRate", "Bit rate", bitRate);
  addStream(result, *song);
  context.printer.block(result);
}

}  // namespace kolum::tool
