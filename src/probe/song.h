// The song probe.
#ifndef KOLUM_PROBE_SONG_H
#define KOLUM_PROBE_SONG_H

#include <cstdint>
#include <optional>
#include <string>

#include "base/trace.h"
#include "probe/dsd.h"

namespace kolum::probe {

// Set means found: an output whose fact is empty keeps the caller's value.
struct SongFacts {
  std::optional<std::int64_t> containerBitRate;
  std::optional<std::int64_t> bitRate;
  std::optional<std::int64_t> duration;  // seconds
  std::optional<int> profile;
  std::optional<int> sampleRate;
  std::optional<int> bitsPerSample;
  std::optional<int> channels;
  std::optional<std::uint32_t> containerFormat;
  std::optional<int> codec;
  std::optional<int> level;
  std::string dlnaProfile;  // empty when there is none
  // What the DSD tool reported, for DSD songs.
  std::optional<DsdNumbers> dsd;
};

struct SongResult {
  bool succeeded = false;
  // The DSD tool could not be started.
  bool toolIsMissing = false;
  // What was found, up to the failure if there was one.
  SongFacts facts;
  Trace trace;
};

// TOOLFOLDER is where the DSD tool is, with its closing "/"; null when that is not known.
SongResult probeSong(const std::string& path, std::string_view fileName, const char* toolFolder);

}  // namespace kolum::probe

#endif
