#include <algorithm>
#include <array>

#include "read/headers/picture_formats.h"

namespace kolum::headers {

namespace {

constexpr unsigned kGray = 0;
constexpr unsigned kRgb = 2;
constexpr unsigned kPalette = 3;
constexpr unsigned kGrayAlpha = 4;
constexpr unsigned kRgbAlpha = 6;

struct Layout {
  unsigned colourType;
  unsigned depth;
  unsigned channels;  // for which an "sBIT" chunk states the original depth
  std::string_view pixelFormat;
  std::string_view transparent;  // with a transparent colour; empty if FFmpeg refuses or ignores it
};

constexpr auto kLayouts = std::to_array<Layout>({
    {kGray, 1, 1, "monob", ""},
    {kGray, 2, 1, "gray", "ya8"},
    {kGray, 4, 1, "gray", "ya8"},
    {kGray, 8, 1, "gray", "ya8"},
    {kGray, 16, 1, "gray16be", "ya16be"},
    {kRgb, 8, 3, "rgb24", "rgba"},
    {kRgb, 16, 3, "rgb48be", "rgba64be"},
    {kPalette, 1, 3, "pal8", "pal8"},
    {kPalette, 2, 3, "pal8", "pal8"},
    {kPalette, 4, 3, "pal8", "pal8"},
    {kPalette, 8, 3, "pal8", "pal8"},
    {kGrayAlpha, 8, 2, "ya8", ""},
    {kGrayAlpha, 16, 2, "ya16be", ""},
    {kRgbAlpha, 8, 4, "rgba", ""},
    {kRgbAlpha, 16, 4, "rgba64be", ""},
});

struct Header {
  const Layout* layout = nullptr;
  Picture picture;
};

std::optional<Header> readHeader(ByteReader bytes) {
  const std::uint64_t width = bytes.bigEndian(4);
  const std::uint64_t height = bytes.bigEndian(4);
  const std::uint64_t depth = bytes.bigEndian(1);
  const std::uint64_t colourType = bytes.bigEndian(1);
  const std::uint64_t compression = bytes.bigEndian(1);
  const std::uint64_t filter = bytes.bigEndian(1);
  const std::uint64_t interlacing = bytes.bigEndian(1);
  if (bytes.failed() || bytes.left() != 0 || !isPossibleSize(width, height)) return std::nullopt;
  if (compression != 0 || filter != 0 || interlacing > 1) return std::nullopt;
  const auto layout = std::find_if(kLayouts.begin(), kLayouts.end(), [&](const Layout& candidate) {
    return candidate.colourType == colourType && candidate.depth == depth;
  });
  if (layout == kLayouts.end()) return std::nullopt;
  return Header{.layout = &*layout,
                .picture = {.format = PictureFormat::kPng,
                            .width = static_cast<int>(width),
                            .height = static_cast<int>(height),
                            .pixelFormat = layout->pixelFormat}};
}

// Each of these takes the chunk of its type; false if FFmpeg may refuse or ignore it.

bool takeTransparency(ByteReader bytes, Header& header) {
  const unsigned colourType = header.layout->colourType;
  const std::size_t size = colourType == kGray ? 2 : 6;
  if (colourType != kPalette && bytes.left() != size) return false;
  header.picture.pixelFormat = header.layout->transparent;
  return !header.picture.pixelFormat.empty();
}

bool takePixelSize(ByteReader bytes, Header& header) {
  const std::uint64_t x = bytes.bigEndian(4);
  const std::uint64_t y = bytes.bigEndian(4);
  if (bytes.failed() || bytes.left() != 1) return false;
  if (x == 0 || x > INT_MAX || y == 0 || y > INT_MAX) return false;
  header.picture.sampleAspect = {static_cast<int>(x), static_cast<int>(y)};
  return true;
}

bool takeSignificantBits(ByteReader bytes, Header& header) {
  if (bytes.left() != header.layout->channels) return false;
  std::uint64_t most = 0;
  while (bytes.left() > 0) most = std::max(most, bytes.bigEndian(1));
  return most > 0 && most <= (header.layout->colourType == kPalette ? 8 : header.layout->depth);
}

bool refuse(ByteReader /*bytes*/, Header& /*header*/) {
  return false;
}

struct Chunk {
  std::string_view type;
  bool (*take)(ByteReader bytes, Header& header);
};

// Chunks before the picture's data; all others are skipped. Those of animations would make FFmpeg
// choose another demuxer.
constexpr auto kChunks = std::to_array<Chunk>({
    {"tRNS", takeTransparency},
    {"pHYs", takePixelSize},
    {"sBIT", takeSignificantBits},
    {"IHDR", refuse},
    {"IEND", refuse},
    {"acTL", refuse},
    {"fcTL", refuse},
    {"fdAT", refuse},
});

bool takeChunk(std::string_view type, ByteReader bytes, Header& header) {
  const auto chunk = std::find_if(kChunks.begin(), kChunks.end(),
                                  [type](const Chunk& each) { return each.type == type; });
  return chunk == kChunks.end() || chunk->take(bytes, header);
}

constexpr std::size_t kMagicSize = 8;
constexpr std::size_t kChecksumSize = 4;
constexpr std::uint64_t kHeaderSize = 13;

}  // namespace

std::optional<Picture> readPng(ByteReader& bytes, std::int64_t size) {
  bytes.skip(kMagicSize);
  const bool hasHeader = bytes.bigEndian(4) == kHeaderSize && bytes.text(4) == "IHDR";
  auto header = hasHeader ? readHeader(ByteReader(bytes.take(kHeaderSize))) : std::nullopt;
  bytes.skip(kChecksumSize);
  while (header && !bytes.failed()) {
    const std::uint64_t length = bytes.bigEndian(4);
    const std::string_view type = bytes.text(4);
    // FFmpeg stops at a chunk that is cut off, and knows the picture from its first data on.
    const std::uint64_t end = bytes.position() + length + kChecksumSize;
    if (end > static_cast<std::uint64_t>(size)) return std::nullopt;
    if (type == "IDAT") return header->picture;
    const auto content = bytes.take(length);
    bytes.skip(kChecksumSize);
    if (!bytes.failed() && !takeChunk(type, ByteReader(content), *header)) return std::nullopt;
  }
  return std::nullopt;
}

}  // namespace kolum::headers
