// A song's data, as the library's song probe finds it.
#ifndef KOLUM_TOOL_FILES_SONG_H
#define KOLUM_TOOL_FILES_SONG_H

#include <kolum/identifiers.h>

#include <cstdint>
#include <optional>

#include "files/identifiers.h"
#include "files/paths.h"

namespace kolum::tool {

struct Song {
  // Outputs without a value keep this preset.
  static constexpr std::uint32_t kUnset = UINT32_MAX;

  std::uint32_t containerBitRate = kUnset;
  std::uint32_t bitRate = kUnset;
  std::uint32_t sampleRate = kUnset;
  std::uint32_t bitsPerSample = kUnset;
  std::uint32_t channels = kUnset;
  std::uint32_t duration = kUnset;
  std::uint32_t containerFormat = kUnset;  // also the library's own value for "unknown"
  std::uint32_t codec = kUnset;
  std::int32_t profile = PROFILE_UNKNOWN;
  std::int32_t level = LEVEL_UNKNOWN;
  char dlnaProfile[64] = "";

  bool isDsd() const { return containerFormat == FORMAT_DSF || containerFormat == FORMAT_DFF; }
};

// Empty if the file contains no song that can be probed.
std::optional<Song> readSong(const MediaPath& path);

}  // namespace kolum::tool

#endif
