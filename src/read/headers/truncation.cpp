#include "read/headers/truncation.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "base/bytes.h"

namespace kolum::headers {

namespace {

using Bytes = std::span<const std::uint8_t>;
using namespace std::string_view_literals;

// The last COUNT bytes, or all.
std::vector<std::uint8_t> tailOf(const media::Source& source, std::int64_t count) {
  const std::int64_t size = source.size();
  std::vector<std::uint8_t> tail(static_cast<std::size_t>(std::min(count, size)));
  const std::ptrdiff_t got = source.readAt(size - static_cast<std::int64_t>(tail.size()), tail);
  tail.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  return tail;
}

// Whether SIZE bytes at POSITION end beyond the file.
bool endsBeyond(const media::Source& source, std::int64_t position, std::uint64_t size) {
  return position > source.size() || size > static_cast<std::uint64_t>(source.size() - position);
}

// Other programs append data of their own, which is no box.
bool isKnownBox(std::string_view type) {
  constexpr auto kTypes = std::to_array<std::string_view>(
      {"ftyp", "moov", "mdat", "moof", "free", "skip", "wide", "uuid", "meta", "sidx", "styp"});
  return std::find(kTypes.begin(), kTypes.end(), type) != kTypes.end();
}

// Box after box, up to a number that films without fragments never have.
bool isMp4Truncated(const media::Source& source) {
  constexpr int kMostBoxes = 64;
  constexpr std::size_t kLongHeader = 16;
  std::int64_t position = 0;
  for (int i = 0; i < kMostBoxes && position < source.size(); ++i) {
    std::array<std::uint8_t, kLongHeader> header = {};
    const std::ptrdiff_t got = source.readAt(position, header);
    if (got < 8) return false;  // padding
    ByteReader bytes(Bytes(header).first(static_cast<std::size_t>(got)));
    std::uint64_t size = bytes.bigEndian(4);
    if (!isKnownBox(bytes.text(4)) || size == 0) return false;  // 0: up to the end
    if (size == 1) size = bytes.bigEndian(8);
    if (bytes.failed() || size < 8) return false;
    if (endsBeyond(source, position, size)) return true;
    position += static_cast<std::int64_t>(size);
  }
  return false;
}

// A variable-length number of EBML; all ones stand for "unknown".
struct EbmlNumber {
  std::uint64_t value = 0;
  bool isKnown = false;
};

EbmlNumber ebmlNumber(ByteReader& bytes) {
  const std::uint64_t first = bytes.bigEndian(1);
  std::size_t more = 0;
  while (more < 8 && (first << more & 0x80) == 0) ++more;
  if (more == 8) return {};
  const std::uint64_t mark = std::uint64_t{0x80} >> more << 8 * more;
  const std::uint64_t value = (first << 8 * more | bytes.bigEndian(more)) & (mark - 1);
  return {value, !bytes.failed() && value != mark - 1};
}

bool isMatroskaTruncated(const media::Source& source) {
  constexpr std::size_t kIdSize = 4;
  constexpr std::uint64_t kSegment = 0x18538067;
  ByteReader bytes(source.head());
  bytes.skip(kIdSize);
  const EbmlNumber header = ebmlNumber(bytes);
  if (!header.isKnown || header.value > bytes.left()) return false;
  bytes.skip(static_cast<std::size_t>(header.value));
  if (bytes.bigEndian(kIdSize) != kSegment) return false;
  const EbmlNumber segment = ebmlNumber(bytes);
  return segment.isKnown &&
         endsBeyond(source, static_cast<std::int64_t>(bytes.position()), segment.value);
}

constexpr std::int64_t kChunkHeader = 8;

// Writers that cannot go back leave zero or a number close to the largest.
bool isKnownSize(std::uint64_t size) {
  constexpr std::uint64_t kLargest = 0xFFFFFF00;
  return size != 0 && size < kLargest;
}

bool isRiffTruncated(const media::Source& source) {
  ByteReader bytes(source.head());
  bytes.skip(4);
  const std::uint64_t size = bytes.littleEndian(4);
  return isKnownSize(size) && endsBeyond(source, kChunkHeader, size);
}

bool isIffTruncated(const media::Source& source) {
  ByteReader bytes(source.head());
  bytes.skip(4);
  const std::uint64_t size = bytes.bigEndian(4);
  return isKnownSize(size) && endsBeyond(source, kChunkHeader, size);
}

// Some programs append data of their own behind the closing mark.
bool isPngTruncated(const media::Source& source) {
  constexpr std::int64_t kClosing = 65536;
  const auto tail = tailOf(source, kClosing);
  return textOf(tail).find("IEND\xAE\x42\x60\x82") == std::string_view::npos;
}

// In the picture's own data every byte FF is followed by a zero or the mark of a restart. Other
// bytes at the end belong to something that follows the picture.
bool isJpegTruncated(const media::Source& source) {
  constexpr std::uint8_t kMark = 0xFF;
  constexpr std::int64_t kEnough = 2048;
  const auto tail = tailOf(source, kEnough);
  bool hasMarks = false;
  for (std::size_t i = 0; i + 1 < tail.size(); ++i) {
    if (tail[i] != kMark) continue;
    const std::uint8_t next = tail[i + 1];
    if (next != 0 && (next < 0xD0 || next > 0xD7)) return false;
    hasMarks = true;
  }
  return hasMarks;
}

bool isGifTruncated(const media::Source& source) {
  constexpr std::int64_t kClosing = 64;
  const auto tail = tailOf(source, kClosing);
  return std::find(tail.begin(), tail.end(), ';') == tail.end();
}

struct Format {
  std::size_t position;
  std::string_view magic;
  bool (*isTruncated)(const media::Source& source);
};

constexpr auto kFormats = std::to_array<Format>({
    {4, "ftyp", isMp4Truncated},
    {4, "moov", isMp4Truncated},
    {4, "mdat", isMp4Truncated},
    {4, "wide", isMp4Truncated},
    {0, "\x1A\x45\xDF\xA3", isMatroskaTruncated},
    {0, "RIFF", isRiffTruncated},
    {0, "FORM", isIffTruncated},
    {0, "\x89PNG\r\n\x1A\n", isPngTruncated},
    {0, "\xFF\xD8\xFF", isJpegTruncated},
    {0, "GIF8", isGifTruncated},
});

}  // namespace

bool isTruncated(const media::Source& source) {
  const std::string_view head = textOf(source.head());
  const auto* format = std::find_if(kFormats.begin(), kFormats.end(), [head](const Format& row) {
    return head.size() > row.position && head.substr(row.position).starts_with(row.magic);
  });
  return format != kFormats.end() && format->isTruncated(source);
}

}  // namespace kolum::headers
