// The details of streams, and the tags of films.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "base/clean_text.h"
#include "fuzz/memory_file.h"
#include "isolation/wire.h"
#include "media/film_tags.h"
#include "media/source.h"
#include "read/findings/findings.h"

namespace {

void mustBeClean(const std::string& text) {
  if (!kolum::isCleanText(text)) std::abort();
}

void mustBeClean(const std::vector<std::string>& texts) {
  if (texts.size() > kolum::media::kMostFilmNames) std::abort();
  for (const std::string& text : texts) mustBeClean(text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const kolum::fuzz::MemoryFile file(data, size);
  const auto source = kolum::media::Source::open(file.path());
  if (!source) std::abort();
  const kolum::read::Findings found =
      kolum::read::look(*source, {.container = kolum::ffmpeg::Depth::kStreams, .details = true});
  if (!found.container) return 0;
  // Whoever receives findings refuses values that no reader may give.
  if (!kolum::isolation::decodeFindings(kolum::isolation::encode(found))) std::abort();
  const kolum::media::FilmTags tags = kolum::media::filmTagsOf(*found.container);
  for (const std::string& text :
       {tags.title, tags.show, tags.episodeId, tags.network, tags.description, tags.synopsis,
        tags.comment, tags.copyright, tags.make, tags.model, tags.software, tags.placeName})
    mustBeClean(text);
  for (const auto& texts : {tags.artists, tags.genres, tags.directors, tags.actors})
    mustBeClean(texts);
  return 0;
}
