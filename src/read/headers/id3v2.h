// ID3v2 tags, which may stand before and within files of any kind.
#ifndef KOLUM_READ_HEADERS_ID3V2_H
#define KOLUM_READ_HEADERS_ID3V2_H

#include <cstdint>
#include <span>

#include "media/source.h"

namespace kolum::headers {

// The size in bytes of the tag at the beginning of these bytes, with its header and footer; 0 if
// there is none.
std::int64_t id3v2Size(std::span<const std::uint8_t> head);

// Where the tag of a DSF file stands whose first bytes these are; 0 if there is none.
std::int64_t dsfTagPosition(std::span<const std::uint8_t> head);

// Tags may be compressed, a thousand to one, and their readers keep everything. Blanks the tags of
// a file (before its data, in a chunk, at the end of a DSF file) that inflate to more than the
// budget.
void blankInflatingTags(const media::Source& source);

}  // namespace kolum::headers

#endif
