// Reads the bytes as a song and as a photo.
#include <kolum/audio.h>
#include <kolum/photo.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz/memory_file.h"

namespace {

void readSong(const kolum::fuzz::MemoryFile& file) {
  uint32_t numbers[8] = {};
  int32_t profile = 0;
  int32_t level = 0;
  // No longer than promised, and always terminated.
  char dlnaProfile[16];
  std::memset(dlnaProfile, 0, sizeof dlnaProfile);
  GetAudioMetadata(file.folder().c_str(), file.name().c_str(), &numbers[0], &numbers[1],
                   &numbers[2], &numbers[3], &numbers[4], &numbers[5], &numbers[6], &numbers[7],
                   &profile, &level, dlnaProfile);
  if (std::memchr(dlnaProfile, '\0', sizeof dlnaProfile) == nullptr) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const kolum::fuzz::MemoryFile file(data, size);
  readSong(file);
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t pixelFormat = 0;
  GetPhotoMetadata(file.folder().c_str(), file.name().c_str(), &pixelFormat);
  songObject_st song;
  std::memset(&song, 0, sizeof song);
  GetDsfMetadata(file.folder().c_str(), file.name().c_str(), &song);
  for (const auto& text : {song.title, song.artist, song.albumArtist, song.album, song.genre})
    if (std::memchr(text, 0, sizeof song.title) == nullptr) std::abort();
  GetPhotoHW(file.path().c_str(), &width, &height);
  return 0;
}
