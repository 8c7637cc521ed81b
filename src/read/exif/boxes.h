// Boxes of the ISO base media file format, in a file and in memory.
#ifndef KOLUM_READ_EXIF_BOXES_H
#define KOLUM_READ_EXIF_BOXES_H

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string_view>

#include "media/source.h"
#include "read/exif/blocks.h"

namespace kolum::exif {

struct Box {
  std::string_view type;
  std::span<const std::uint8_t> content;
};

// Calls TAKE for each box, until one makes no sense.
void forEachBox(std::span<const std::uint8_t> bytes, const std::function<void(const Box&)>& take);

struct FileRange {
  std::int64_t begin = 0;
  std::int64_t end = 0;
};

// Where the content of the first box of that type is, of those that follow each other in RANGE.
std::optional<FileRange> findBox(const media::Source& source, FileRange range,
                                 std::string_view type);

// The same of those whose content begins with BEGINNING, such as an identifier, which is not part
// of the range that is returned.
std::optional<FileRange> findBoxWith(const media::Source& source, FileRange range,
                                     std::string_view type, std::string_view beginning);

// Empty if there is none, or if it is larger than any block.
Bytes contentOfBox(const media::Source& source, FileRange range, std::string_view type);
Bytes contentOf(const media::Source& source, const std::optional<FileRange>& range);

}  // namespace kolum::exif

#endif
