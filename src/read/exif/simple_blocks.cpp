// Containers that need no more than a few lines each.
#include <algorithm>
#include <array>
#include <string_view>

#include "base/bytes.h"
#include "read/exif/blocks.h"

namespace kolum::exif {

namespace {

using namespace std::string_view_literals;

std::string_view read(const media::Source& source, std::int64_t position,
                      std::span<std::uint8_t> bytes) {
  if (source.readAt(position, bytes) != std::ssize(bytes)) return {};
  return textOf(bytes);
}

// Behind the sub-blocks that begin at POSITION, or empty.
std::optional<std::int64_t> afterSubBlocks(const media::Source& source, std::int64_t position,
                                           int& blocksLeft) {
  while (blocksLeft-- > 0) {
    std::array<std::uint8_t, 1> size = {};
    if (read(source, position, size).empty()) return std::nullopt;
    position += 1 + size[0];
    if (size[0] == 0) return position;
  }
  return std::nullopt;
}

// XMP stands there as it is, not in sub-blocks; what looks like sub-blocks at its end leads every
// reader that does not know it to the final zero.
std::string gifXmpAt(const media::Source& source, std::int64_t begin, std::int64_t end) {
  constexpr std::int64_t kTrailer = 257;
  if (end - begin <= kTrailer) return {};
  return std::string(
      textOf(bytesAt(source, begin, static_cast<std::uint64_t>(end - begin - kTrailer - 1))));
}

std::size_t paletteSize(unsigned flags) {
  return (flags & 0x80U) != 0 ? std::size_t{6} << (flags & 7U) : 0;
}

}  // namespace

void findInWebp(const media::Source& source, Blocks& blocks) {
  constexpr int kMostChunks = 10'000;  // frames of an animation are chunks
  std::int64_t position = 12;
  for (int i = 0; i < kMostChunks; ++i) {
    std::array<std::uint8_t, 8> header = {};
    if (read(source, position, header).empty()) return;
    ByteReader reader(header);
    const std::string_view type = reader.text(4);
    const auto size = reader.littleEndian(4);
    position += std::ssize(header);
    if (type == "EXIF") takeExif(bytesAt(source, position, size), blocks);
    if (type == "XMP " && blocks.xmp.empty()) blocks.xmp = textOf(bytesAt(source, position, size));
    if (type == "ICCP") blocks.iccProfile = bytesAt(source, position, size);
    position += static_cast<std::int64_t>(size + size % 2);
  }
}

void findInGif(const media::Source& source, Blocks& blocks) {
  std::array<std::uint8_t, 13> head = {};
  if (read(source, 0, head).empty()) return;
  std::int64_t position = std::ssize(head) + static_cast<std::int64_t>(paletteSize(head[10]));
  // XMP stands in front of the first picture: animations are not read to their end.
  for (int blocksLeft = 1000; blocksLeft > 0;) {
    std::array<std::uint8_t, 14> block = {};
    const std::string_view text = read(source, position, block);
    if (text.empty() || text[0] != '!') return;
    const bool isXmp = text.substr(1) == "\xFF\x0BXMP DataXMP"sv;
    const std::int64_t begin = position + (isXmp ? std::ssize(block) : 2);
    const auto end = afterSubBlocks(source, begin, blocksLeft);
    if (!end) return;
    if (isXmp) blocks.xmp = gifXmpAt(source, begin, *end);
    if (isXmp) return;
    position = *end;
  }
}

namespace {

// The camera's size of the picture, from a list of numbered values.
std::optional<media::PhotoSize> fujifilmSize(const media::Source& source, std::int64_t position,
                                             std::uint64_t size) {
  constexpr unsigned kCroppedSize = 0x0111;
  constexpr std::size_t kMostValues = 1000;
  const Bytes bytes = bytesAt(source, position, std::min<std::uint64_t>(size, 65536));
  ByteReader reader(bytes);
  const auto count = reader.bigEndian(4);
  for (std::size_t i = 0; i < std::min<std::uint64_t>(count, kMostValues); ++i) {
    const auto tag = reader.bigEndian(2);
    const auto valueSize = reader.bigEndian(2);
    ByteReader value(reader.take(valueSize));
    if (reader.failed()) return std::nullopt;
    if (tag != kCroppedSize) continue;
    const auto height = static_cast<int>(value.bigEndian(2));
    const auto width = static_cast<int>(value.bigEndian(2));
    return media::PhotoSize{.width = width, .height = height};
  }
  return std::nullopt;
}

}  // namespace

void findInFujifilmRaw(const media::Source& source, Blocks& blocks) {
  constexpr std::int64_t kDirectory = 84;
  std::array<std::uint8_t, 16> directory = {};
  if (read(source, kDirectory, directory).empty()) return;
  ByteReader reader(directory);
  const auto jpeg = static_cast<std::int64_t>(reader.bigEndian(4));
  reader.skip(4);
  const auto values = static_cast<std::int64_t>(reader.bigEndian(4));
  const auto valuesSize = reader.bigEndian(4);
  blocks.size = fujifilmSize(source, values, valuesSize);
  std::array<std::uint8_t, 3> start = {};
  if (read(source, jpeg, start) == "\xFF\xD8\xFF"sv) findInJpeg(source, jpeg, blocks);
}

}  // namespace kolum::exif
