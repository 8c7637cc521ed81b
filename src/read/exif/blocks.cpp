#include "read/exif/blocks.h"

#include <algorithm>
#include <string_view>

#include "base/bytes.h"

namespace kolum::exif {

namespace {

using namespace std::string_view_literals;

struct ContainerRow {
  std::size_t offset;
  std::string_view signature;
  void (*find)(const media::Source&, Blocks&);
};

void findInWholeJpeg(const media::Source& source, Blocks& blocks) {
  findInJpeg(source, 0, blocks);
}

// Boxes are for films, too: only the brands of pictures count.
constexpr ContainerRow kContainers[] = {
    {0, "\xFF\xD8\xFF"sv, findInWholeJpeg},
    {0, "\x89PNG\r\n\x1A\n"sv, findInPng},
    {8, "WEBPVP8X"sv, findInWebp},
    {0, "GIF89a"sv, findInGif},
    {0, "II*\0"sv, findInTiff},
    {0, "MM\0*"sv, findInTiff},
    {0, "IIRO"sv, findInTiff},
    {0, "IIRS"sv, findInTiff},
    {0, "MMOR"sv, findInTiff},
    {0, "IIU\0"sv, findInTiff},
    {0, "FUJIFILMCCD-RAW"sv, findInFujifilmRaw},
    {0, "\0\0\0\x0CJXL \r\n\x87\n"sv, findInJpegXl},
    {4, "ftypcrx "sv, findInCanonRaw3},
    {4, "ftypheic"sv, findInHeif},
    {4, "ftypheix"sv, findInHeif},
    {4, "ftypheim"sv, findInHeif},
    {4, "ftypheis"sv, findInHeif},
    {4, "ftyphevc"sv, findInHeif},
    {4, "ftyphevx"sv, findInHeif},
    {4, "ftypmif1"sv, findInHeif},
    {4, "ftypmsf1"sv, findInHeif},
    {4, "ftypmiaf"sv, findInHeif},
    {4, "ftypavif"sv, findInHeif},
    {4, "ftypavis"sv, findInHeif},
};

}  // namespace

std::optional<Blocks> findBlocks(const media::Source& source) {
  const std::string_view head = textOf(source.head());
  const auto* row = std::ranges::find_if(kContainers, [&](const ContainerRow& candidate) {
    return head.size() > candidate.offset &&
           head.substr(candidate.offset).starts_with(candidate.signature);
  });
  if (row == std::end(kContainers)) return std::nullopt;
  Blocks blocks;
  row->find(source, blocks);
  return blocks;
}

Bytes bytesAt(const media::Source& source, std::int64_t position, std::uint64_t size) {
  if (position < 0 || size > kLargestBlock) return {};
  // Block devices have no size, and no photo is one.
  if (position > source.size() || size > static_cast<std::uint64_t>(source.size() - position))
    return {};
  Bytes bytes(static_cast<std::size_t>(size));
  if (source.readAt(position, bytes) != static_cast<std::ptrdiff_t>(size)) return {};
  return bytes;
}

}  // namespace kolum::exif
