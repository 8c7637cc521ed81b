#include "files/song.h"

#include <kolum/audio.h>

#include "files/file_types.h"
#include "machine/library.h"

namespace kolum::tool {

std::optional<Song> readSong(const MediaPath& path) {
  // An external tool reads DSD songs, so the library must know where it is.
  if (isDsdName(path.name)) initLibrary();
  Song song;
  const bool isRead =
      GetAudioMetadata(path.folder.c_str(), path.name.c_str(), &song.containerBitRate,
                       &song.bitRate, &song.sampleRate, &song.bitsPerSample, &song.channels,
                       &song.duration, &song.containerFormat, &song.codec, &song.profile,
                       &song.level, song.dlnaProfile) == 0;
  const bool isFound = song.codec != Song::kUnset || song.sampleRate != Song::kUnset;
  return isRead && isFound ? std::optional(song) : std::nullopt;
}

}  // namespace kolum::tool
