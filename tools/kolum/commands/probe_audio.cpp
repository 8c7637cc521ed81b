#include <kolum/identifiers.h>

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

void addStream(Result& result, const Song& song) {
  std::string codec;
  if (song.codec) {
    const int profile = song.profile.value_or(PROFILE_UNKNOWN);
    result.data("audioCodec", codecIdentifier(*song.codec));
    addProfile(result, "audioProfile", profile, *song.codec);
    codec = codecText(*song.codec, profile);
  }
  if (song.level.value_or(LEVEL_UNKNOWN) != LEVEL_UNKNOWN) result.data("audioLevel", *song.level);
  const Sound sound = {.sampleRate = song.sampleRate,
                       .channels = song.channels,
                       .bitsPerSample = song.bitsPerSample,
                       .bitRate = song.bitRate};
  addSound(result, sound);
  result.show("Audio", joined({codec, soundText(sound)}));
}

}  // namespace

Description describeAudio(const MediaPath& path, const ProbeOptions&) {
  const auto song = readSong(path);
  if (!song) return diagnose(path, Wanted::kSong);
  Result result = Result::ofFile(path.given);
  addKind(result, MEDIA_KIND_MUSIC);
  if (song->containerFormat) addContainer(result, *song->containerFormat);
  addMimeTypeOfName(result, path.name, MEDIA_KIND_BIT_MUSIC);
  result.text("dlnaProfile", "DLNA profile", song->dlnaProfile);
  if (song->duration) result.duration("duration", "Duration", *song->duration);
  if (song->containerBitRate != 0) result.bitRate("bitRate", "Bit rate", song->containerBitRate);
  addStream(result, *song);
  return result;
}

}  // namespace kolum::tool
