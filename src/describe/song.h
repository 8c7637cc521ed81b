// A song's numbers. Those of DSD songs are what the external tool reports, and else the header's.
#ifndef KOLUM_DESCRIBE_SONG_H
#define KOLUM_DESCRIBE_SONG_H

#include <cstdint>
#include <optional>
#include <string>

#include "probe/song.h"

namespace kolum::describe {

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

// Empty if no song was found.
std::optional<Song> songOf(const probe::SongResult& result);

}  // namespace kolum::describe

#endif
