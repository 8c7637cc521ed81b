#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "base/bytes.h"
#include "read/exif/blocks.h"

namespace kolum::exif {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kExif = "Exif\0\0"sv;
constexpr std::string_view kXmp = "http://ns.adobe.com/xap/1.0/\0"sv;
constexpr std::string_view kExtendedXmp = "http://ns.adobe.com/xmp/extension/\0"sv;
constexpr std::string_view kPhotoshop = "Photoshop 3.0\0"sv;
constexpr std::string_view kIcc = "ICC_PROFILE\0"sv;

// Edited photos have some dozens.
constexpr int kMostSegments = 2000;

// What segments have in pieces, in the order of the file.
struct Pieces {
  Bytes photoshop;
  Bytes icc;
  std::size_t extendedXmp = 0;  // bytes
};

void append(std::span<const std::uint8_t> piece, Bytes& whole) {
  if (whole.size() + piece.size() > kLargestBlock) return;
  whole.insert(whole.end(), piece.begin(), piece.end());
}

// CONTENT without a header of that LENGTH.
std::span<const std::uint8_t> after(std::size_t length, std::span<const std::uint8_t> content) {
  return content.subspan(std::min(length, content.size()));
}

void takeExtendedXmp(std::span<const std::uint8_t> content, Pieces& pieces, Blocks& blocks) {
  constexpr std::size_t kGuidSize = 32;
  ByteReader reader(content);
  XmpPart part = {.guid = std::string(reader.text(kGuidSize)),
                  .total = reader.bigEndian(4),
                  .offset = reader.bigEndian(4),
                  .bytes = {}};
  if (reader.failed() || pieces.extendedXmp + reader.left() > kLargestBlock) return;
  pieces.extendedXmp += reader.left();
  part.bytes = reader.text(reader.left());
  blocks.extendedXmp.push_back(std::move(part));
}

void takeSegment(std::span<const std::uint8_t> content, Pieces& pieces, Blocks& blocks) {
  const std::string_view text = textOf(content);
  // The number of the piece and how many there are.
  constexpr std::size_t kIccCounters = 2;
  if (text.starts_with(kExif))
    takeExif(content, blocks);
  else if (text.starts_with(kXmp) && blocks.xmp.empty())
    blocks.xmp = text.substr(kXmp.size());
  else if (text.starts_with(kExtendedXmp))
    takeExtendedXmp(after(kExtendedXmp.size(), content), pieces, blocks);
  else if (text.starts_with(kPhotoshop))
    append(after(kPhotoshop.size(), content), pieces.photoshop);
  else if (text.starts_with(kIcc))
    append(after(kIcc.size() + kIccCounters, content), pieces.icc);
}

// The segments that may hold what is wanted: APP1, APP2, APP13.
bool isWanted(unsigned marker) {
  return marker == 0xE1 || marker == 0xE2 || marker == 0xED;
}

// Whether pictures begin here, behind which nothing of interest follows.
bool isEnd(unsigned marker) {
  return marker == 0xDA || marker == 0xD9;
}

// The IPTC datasets among Photoshop's resources: "8BIM", number, name, size, content.
Bytes iptcOf(std::span<const std::uint8_t> resources) {
  constexpr unsigned kIptc = 0x0404;
  ByteReader reader(resources);
  while (reader.text(4) == "8BIM") {
    const auto number = reader.bigEndian(2);
    const auto nameSize = reader.bigEndian(1);
    reader.skip(nameSize + (nameSize % 2 == 0 ? 1 : 0));
    const auto size = reader.bigEndian(4);
    const auto content = reader.take(size);
    if (number == kIptc) return {content.begin(), content.end()};
    if (size % 2 != 0) reader.skip(1);
  }
  return {};
}

}  // namespace

void findInJpeg(const media::Source& source, std::int64_t begin, Blocks& blocks) {
  Pieces pieces;
  std::int64_t position = begin + 2;
  for (int i = 0; i < kMostSegments; ++i) {
    std::array<std::uint8_t, 4> header = {};
    if (source.readAt(position, header) != std::ssize(header) || header[0] != 0xFF) break;
    if (header[1] == 0xFF) {  // padding
      ++position;
      continue;
    }
    const unsigned size = header[2] * 256U + header[3];
    if (isEnd(header[1]) || size < 2) break;
    if (isWanted(header[1])) takeSegment(bytesAt(source, position + 4, size - 2), pieces, blocks);
    position += 2 + size;
  }
  blocks.iptc = iptcOf(pieces.photoshop);
  blocks.iccProfile = std::move(pieces.icc);
}

}  // namespace kolum::exif
