#include <algorithm>
#include <array>

#include "read/headers/picture_formats.h"

namespace kolum::headers {

namespace {

enum Compression : std::uint32_t { kNone = 0, kRle8 = 1, kRle4 = 2, kMasks = 3 };

constexpr std::size_t kFileHeaderSize = 14;
constexpr std::size_t kOldInfoSize = 12;
constexpr std::size_t kInfoSize = 40;
constexpr auto kInfoSizes =
    std::to_array<std::uint64_t>({kOldInfoSize, kInfoSize, 56, 64, 108, 124});

struct Masks {
  std::uint32_t red = 0;
  std::uint32_t green = 0;
  std::uint32_t blue = 0;
  bool hasAlpha = false;
  bool operator==(const Masks&) const = default;
};

struct Header {
  std::uint64_t fileSize = 0;
  std::uint64_t dataBegin = 0;
  std::uint64_t infoSize = 0;
  std::int64_t width = 0;
  std::int64_t height = 0;  // negative if the first row is on top
  std::uint64_t depth = 0;
  std::uint64_t compression = kNone;
  Masks masks;

  bool hasPalette() const { return dataBegin > infoSize + kFileHeaderSize; }
  std::uint64_t rows() const { return static_cast<std::uint64_t>(height < 0 ? -height : height); }
  std::uint64_t columns() const { return static_cast<std::uint64_t>(width); }
};

struct Layout {
  std::uint64_t depth;
  Masks masks;
  std::string_view pixelFormat;
};

constexpr auto kMaskLayouts = std::to_array<Layout>({
    {32, {0xFF000000, 0x00FF0000, 0x0000FF00, true}, "abgr"},
    {32, {0xFF000000, 0x00FF0000, 0x0000FF00, false}, "0bgr"},
    {32, {0x00FF0000, 0x0000FF00, 0x000000FF, true}, "bgra"},
    {32, {0x00FF0000, 0x0000FF00, 0x000000FF, false}, "bgr0"},
    {32, {0x0000FF00, 0x00FF0000, 0xFF000000, true}, "argb"},
    {32, {0x0000FF00, 0x00FF0000, 0xFF000000, false}, "0rgb"},
    {32, {0x000000FF, 0x0000FF00, 0x00FF0000, true}, "rgba"},
    {32, {0x000000FF, 0x0000FF00, 0x00FF0000, false}, "rgb0"},
    {16, {0xF800, 0x07E0, 0x001F, false}, "rgb565le"},
    {16, {0x7C00, 0x03E0, 0x001F, false}, "rgb555le"},
    {16, {0x0F00, 0x00F0, 0x000F, false}, "rgb444le"},
});

std::int64_t signedNumber(std::uint64_t value) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

std::optional<Header> readHeader(ByteReader& bytes) {
  Header header;
  bytes.skip(2);  // "BM"
  header.fileSize = bytes.littleEndian(4);
  // FFmpeg is not certain of the format unless these bytes are zero.
  const bool isCertain = bytes.littleEndian(4) == 0;
  header.dataBegin = bytes.littleEndian(4);
  header.infoSize = bytes.littleEndian(4);
  if (!isCertain ||
      std::find(kInfoSizes.begin(), kInfoSizes.end(), header.infoSize) == kInfoSizes.end())
    return std::nullopt;
  const bool isOld = header.infoSize == kOldInfoSize;
  const std::uint64_t width = bytes.littleEndian(isOld ? 2 : 4);
  const std::uint64_t height = bytes.littleEndian(isOld ? 2 : 4);
  header.width = isOld ? static_cast<std::int64_t>(width) : signedNumber(width);
  header.height = isOld ? static_cast<std::int64_t>(height) : signedNumber(height);
  const std::uint64_t planes = bytes.littleEndian(2);
  header.depth = bytes.littleEndian(2);
  if (!isOld) header.compression = bytes.littleEndian(4);
  if (header.compression == kMasks) {
    bytes.skip(20);
    header.masks.red = static_cast<std::uint32_t>(bytes.littleEndian(4));
    header.masks.green = static_cast<std::uint32_t>(bytes.littleEndian(4));
    header.masks.blue = static_cast<std::uint32_t>(bytes.littleEndian(4));
    header.masks.hasAlpha = header.infoSize > kInfoSize && bytes.littleEndian(4) != 0;
  }
  return !bytes.failed() && planes == 1 ? std::optional(header) : std::nullopt;
}

std::string_view maskedFormat(const Header& header) {
  Masks masks = header.masks;
  if (header.depth == 16) masks.hasAlpha = false;  // FFmpeg ignores it
  const auto layout =
      std::find_if(kMaskLayouts.begin(), kMaskLayouts.end(), [&](const Layout& candidate) {
        return candidate.depth == header.depth && candidate.masks == masks;
      });
  return layout != kMaskLayouts.end() ? layout->pixelFormat : "";
}

// Empty if FFmpeg would refuse the picture.
std::string_view statedFormat(const Header& header) {
  if (header.compression == kMasks) return maskedFormat(header);
  const bool isPacked = header.compression != kNone;
  const std::uint64_t packedDepth = header.compression == kRle8 ? 8 : 4;
  if (header.compression > kRle4) return "";
  if (isPacked && (header.depth != packedDepth || header.height < 0)) return "";
  switch (header.depth) {
    case 32:
      return "bgra";
    case 24:
      return "bgr24";
    case 16:
      return "rgb555le";
    case 8:
      return header.hasPalette() ? "pal8" : "gray";
    case 4:
    case 1:
      return header.hasPalette() ? "pal8" : "";
    default:
      return "";
  }
}

// Whether it is certain that FFmpeg takes the fourth byte of pixels for alpha: it does if it is not
// zero in one of them, and also if there are too few. BYTES: the beginning of the file.
bool showsAlpha(const Header& header, ByteReader bytes, std::uint64_t size) {
  constexpr std::size_t kPixel = 4;
  const std::uint64_t pixels = header.columns() * header.rows() * kPixel;
  if (pixels > size - header.dataBegin) return true;
  bytes.skip(header.dataBegin);
  const auto shown = bytes.take(std::min<std::uint64_t>(bytes.left(), pixels));
  for (std::size_t alpha = kPixel - 1; alpha < shown.size(); alpha += kPixel)
    if (shown[alpha] != 0) return true;
  return false;
}

}  // namespace

std::optional<Picture> readBmp(ByteReader& bytes, std::int64_t size) {
  const ByteReader beginning = bytes;
  const auto header = readHeader(bytes);
  if (!header || header->width < 0 || !isPossibleSize(header->columns(), header->rows()))
    return std::nullopt;
  const auto whole = static_cast<std::uint64_t>(size);
  const std::uint64_t end = std::min(header->fileSize, whole);
  const bool isPlausible = header->fileSize <= INT_MAX &&
                           header->dataBegin >= header->infoSize + kFileHeaderSize &&
                           header->dataBegin < end && bytes.position() <= end;
  if (!isPlausible) return std::nullopt;
  const std::string_view pixelFormat = statedFormat(*header);
  if (pixelFormat.empty()) return std::nullopt;
  if (pixelFormat == "bgra" && !showsAlpha(*header, beginning, whole)) return std::nullopt;
  return Picture{.format = PictureFormat::kBmp,
                 .width = static_cast<int>(header->width),
                 .height = static_cast<int>(header->rows()),
                 .pixelFormat = pixelFormat};
}

}  // namespace kolum::headers
