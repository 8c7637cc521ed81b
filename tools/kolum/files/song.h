// A song's data, as the library's song probe finds it.
#ifndef KOLUM_TOOL_FILES_SONG_H
#define KOLUM_TOOL_FILES_SONG_H

#include <cstdint>
#include <optional>
#include <string>

#include "files/paths.h"
#include "read/findings/findings.h"

namespace kolum::tool {

struct Song {
  std::uint64_t containerBitRate = 0;  // bit/s; 0 when unknown, as the others
  std::uint64_t bitRate = 0;           // bit/s
  std::uint64_t sampleRate = 0;
  std::uint64_t bitsPerSample = 0;
  std::uint64_t channels = 0;
  std::optional<std::int64_t> duration;  // seconds
  std::optional<std::uint32_t> containerFormat;
  std::optional<int> codec;
  std::optional<int> profile;
  std::optional<int> level;
  std::string dlnaProfile;
};

// Empty if the file contains no song that can be probed. FAILURE is set if an isolated reader
// failed.
std::optional<Song> readSong(const MediaPath& path, std::optional<read::Failure>& failure);

}  // namespace kolum::tool

#endif
