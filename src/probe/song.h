// The song probe.
#ifndef KOLUM_PROBE_SONG_H
#define KOLUM_PROBE_SONG_H

#include <cstdint>
#include <optional>
#include <string>

#include "base/trace.h"
#include "probe/dsd.h"
#include "probe/reading.h"
#include "read/findings/findings.h"

namespace kolum::probe {

// An empty fact was not found: its output keeps the caller's value.
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
  std::string dlnaProfile;  // empty if there is none
  // What the DSD tool reported, for DSD songs.
  std::optional<DsdNumbers> dsd;
};

struct SongResult {
  bool succeeded = false;
  // The DSD tool could not be started.
  bool toolIsMissing = false;
  // What was found, up to the failure if any.
  SongFacts facts;
  Trace trace;
  // Why the file could not be read, if an isolated reader failed.
  std::optional<read::Failure> failure;
  read::Findings found;  // of a song that the DSD tool does not read
};

// TOOLFOLDER is the DSD tool's folder with its trailing "/"; null if unknown.
SongResult probeSong(const std::string& path, std::string_view fileName, const char* toolFolder,
                     const Reading& reading = {});

}  // namespace kolum::probe

#endif
