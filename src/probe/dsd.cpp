#include "probe/dsd.h"

#include <cstdlib>
#include <string_view>

#include "base/text.h"
#include "isolation/isolation.h"
#include "media/source.h"
#include "probe/streams.h"

namespace kolum::probe {

namespace {

// A container metadata entry and the one field it fills.
struct KeyRow {
  std::string_view key;
  std::string SongTags::*text;
  std::int32_t SongTags::*number;
};

constexpr KeyRow kKeys[] = {
    {"title", &SongTags::title, nullptr},
    {"artist", &SongTags::artist, nullptr},
    {"album_artist", &SongTags::albumArtist, nullptr},
    {"album artist", &SongTags::albumArtist, nullptr},
    {"album", &SongTags::album, nullptr},
    {"genre", &SongTags::genre, nullptr},
    {"date", nullptr, &SongTags::year},
    {"track", nullptr, &SongTags::track},
};

void fillEmptyField(SongTags& tags, const KeyRow& row, const std::string& value) {
  if (row.text != nullptr) {
    if ((tags.*row.text).empty()) tags.*row.text = value;
  } else if (tags.*row.number == 0) {
    tags.*row.number = static_cast<std::int32_t>(std::strtol(value.c_str(), nullptr, 10));
  }
}

tags::DsfTags textsOf(const tags::DsdDocument& document) {
  return {.title = document.text("TITLE"),
          .artist = document.text("ARTIST"),
          .albumArtist = document.text("ARTIST"),
          .album = document.text("ALBUM")};
}

}  // namespace

DsdNumbers numbersOf(const tags::DsdDocument& document) {
  return {.channels = document.number("CHANNEL"),
          .sampleRate = document.number("FREQUENCY"),
          .duration = document.number("DURATION"),
          .year = document.number("YEAR"),
          .track = document.number("TRACK")};
}

DsdResult probeDsd(const std::string& path, const char* toolFolder) {
  DsdResult result;
  const bool isDsf = equalsIgnoringCase(extensionOf(path), ".dsf");
  if (isDsf)
    if (const auto source = media::Source::open(path))
      result.texts = isolation::look(*source, {.dsfTags = true}).dsfTags;
  const tags::DsdToolResult tool = tags::runDsdTool(path, toolFolder);
  result.toolIsMissing = tool.isMissing;
  if (!tool.document) return result;
  if (!isDsf) result.texts = textsOf(*tool.document);
  result.numbers = numbersOf(*tool.document);
  return result;
}

std::optional<SongTags> readSongTags(const std::string& path) {
  const auto container = containerOf(path, ffmpeg::Depth::kStreams);
  if (!container || container->streams.empty()) return std::nullopt;
  SongTags tags;
  for (const auto& [key, value] : container->tags)
    for (const KeyRow& row : kKeys)
      if (row.key == key) fillEmptyField(tags, row, value);
  return tags;
}

}  // namespace kolum::probe
