// The probe of DSD songs: their tags, and what the external DSD tool reports.
#ifndef KOLUM_PROBE_DSD_H
#define KOLUM_PROBE_DSD_H

#include <cstdint>
#include <optional>
#include <string>

#include "read/tags/dsd_tool.h"
#include "read/tags/dsf_tags.h"

namespace kolum::probe {

struct DsdNumbers {
  std::optional<std::int32_t> channels;
  std::optional<std::int32_t> sampleRate;
  std::optional<std::int32_t> duration;  // seconds
  std::optional<std::int32_t> year;
  std::optional<std::int32_t> track;
};

DsdNumbers numbersOf(const tags::DsdDocument& document);

struct DsdResult {
  // The DSD tool could not be started.
  bool toolIsMissing = false;
  tags::DsfTags texts;
  std::optional<DsdNumbers> numbers;  // empty if the tool reported nothing
};

// The texts of DSF files come from their tags alone, those of other files from the tool.
DsdResult probeDsd(const std::string& path, const char* toolFolder);

// The tags that FFmpeg finds in a song's container; of each kind the first with a value.
struct SongTags {
  std::string title;
  std::string artist;
  std::string albumArtist;
  std::string album;
  std::string genre;
  std::int32_t year = 0;
  std::int32_t track = 0;
};

// Empty if FFmpeg cannot open the file or finds no stream in it.
std::optional<SongTags> readSongTags(const std::string& path);

}  // namespace kolum::probe

#endif
