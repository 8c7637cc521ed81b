// The index files of DVDs (IFO) and Blu-ray discs (playlists). Nothing of what they let a player do
// is done: only lists, times and languages are read.
#ifndef KOLUM_READ_HEADERS_DISC_INDEX_H
#define KOLUM_READ_HEADERS_DISC_INDEX_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "media/disc.h"
#include "media/source.h"

namespace kolum::headers {

// Real ones have some ten or hundred kilobytes; of larger ones, the beginning is read.
inline constexpr std::size_t kMostIndexBytes = std::size_t{4} << 20;

// What sort of index file a name belongs to, in any letter case.
enum class IndexKind { kNone, kDvdTitles, kDvdTitleSet, kPlaylist };
IndexKind indexKindOf(std::string_view fileName);

// The index files of a DVD among NAMES: number 0 is the list of titles, the others are title sets.
// Copies for damaged discs come after the originals.
std::map<int, std::vector<std::string>> dvdIndexNames(const std::vector<std::string>& names);

// The name decides which kind it is. The answer's kind is kNone if the content is something else.
media::DiscIndex readDiscIndex(std::string_view fileName, std::span<const std::uint8_t> bytes);
media::DiscIndex readDiscIndex(const media::Source& source);

// The parts of the above.
media::DiscIndex readDvdTitles(std::span<const std::uint8_t> bytes);
media::DiscIndex readDvdTitleSet(std::string_view fileName, std::span<const std::uint8_t> bytes);
media::DiscIndex readPlaylist(std::string_view fileName, std::span<const std::uint8_t> bytes);

}  // namespace kolum::headers

#endif
