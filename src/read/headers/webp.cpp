#include <algorithm>

#include "read/headers/picture_formats.h"

namespace kolum::headers {

namespace {

// Bits that VP8 codes arithmetically, all with equal probabilities, as in a frame's header.
class RangeReader {
 public:
  explicit RangeReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {
    value_ = bytes_.bigEndian(2);
  }

  bool failed() const { return bytes_.failed(); }
  bool bit() {
    const std::uint64_t split = 1 + ((range_ - 1) * 128 >> 8);
    const bool isSet = value_ >= split << 8;
    value_ -= isSet ? split << 8 : 0;
    range_ = isSet ? range_ - split : split;
    while (range_ < 128) {
      range_ <<= 1;
      value_ <<= 1;
      if (++shifts_ % 8 == 0) value_ |= bytes_.bigEndian(1);
    }
    return isSet;
  }
  unsigned bits(int count) {
    unsigned value = 0;
    while (count-- > 0) value = value << 1 | static_cast<unsigned>(bit());
    return value;
  }
  // Values that follow only if a bit is set: COUNT of them, of SIZE bits each.
  void skipOptional(int count, int size) {
    while (count-- > 0)
      if (bit()) bits(size);
  }

 private:
  ByteReader bytes_;
  std::uint64_t value_ = 0;
  std::uint64_t range_ = 255;
  unsigned shifts_ = 0;
};

constexpr int kSign = 1;

// The logarithm of the number of parts with coefficients, for a key frame's header.
unsigned coefficientParts(RangeReader& header) {
  header.bits(2);  // colour space, clamping
  if (header.bit()) {
    const bool hasMap = header.bit();
    if (header.bit()) {
      header.bit();  // absolute values
      header.skipOptional(4, 7 + kSign);
      header.skipOptional(4, 6 + kSign);
    }
    if (hasMap) header.skipOptional(3, 8);
  }
  header.bits(1 + 6 + 3);  // loop filter: type, level, sharpness
  if (header.bit() && header.bit()) header.skipOptional(4 + 4, 6 + kSign);
  return header.bits(2);
}

Picture picture(std::uint64_t width, std::uint64_t height, std::string_view pixelFormat) {
  return {.format = PictureFormat::kWebp,
          .width = static_cast<int>(width),
          .height = static_cast<int>(height),
          .pixelFormat = pixelFormat};
}

// BYTES: behind the chunk header. LENGTH: of the chunk.
std::optional<Picture> readLossy(ByteReader& bytes, std::uint64_t length, bool hasAlpha) {
  constexpr std::uint64_t kKeyFrameHeader = 10;
  constexpr std::uint64_t kStartCode = 0x2A019D;
  constexpr std::uint64_t kLongestHeader = 64;
  const std::uint64_t flagsAndSize = bytes.littleEndian(3);
  const std::uint64_t headerSize = flagsAndSize >> 5;
  const bool isKeyFrame = (flagsAndSize & 1) == 0 && bytes.littleEndian(3) == kStartCode;
  const std::uint64_t width = bytes.littleEndian(2);
  const std::uint64_t height = bytes.littleEndian(2);
  RangeReader header(bytes.take(std::min(headerSize, kLongestHeader)));
  // The high bits would scale the picture up.
  constexpr std::uint64_t kLargest = 0x3FFF;
  if (!isKeyFrame || width > kLargest || height > kLargest || !isPossibleSize(width, height))
    return std::nullopt;
  if (length < kKeyFrameHeader || headerSize > length - kKeyFrameHeader) return std::nullopt;
  // The sizes of several parts would have to be right, too.
  if (coefficientParts(header) != 0 || header.failed()) return std::nullopt;
  return picture(width, height, hasAlpha ? "yuva420p" : "yuv420p");
}

std::optional<Picture> readLossless(ByteReader& bytes, std::uint64_t length) {
  constexpr std::uint64_t kSignature = 0x2F;
  constexpr std::uint64_t kHeader = 5;
  const bool hasSignature = bytes.littleEndian(1) == kSignature;
  const std::uint64_t sizes = bytes.littleEndian(4);
  const std::uint64_t width = (sizes & 0x3FFF) + 1;
  const std::uint64_t height = (sizes >> 14 & 0x3FFF) + 1;
  const std::uint64_t version = sizes >> 29;
  if (!hasSignature || length < kHeader || version != 0 || !isPossibleSize(width, height))
    return std::nullopt;
  return picture(width, height, "argb");
}

// False for animations, and for what FFmpeg would refuse.
bool takeExtendedHeader(ByteReader bytes) {
  constexpr std::uint64_t kAnimation = 0x02;
  const std::uint64_t flags = bytes.littleEndian(1);
  bytes.skip(3);
  const std::uint64_t width = bytes.littleEndian(3) + 1;
  const std::uint64_t height = bytes.littleEndian(3) + 1;
  return !bytes.failed() && bytes.left() == 0 && (flags & kAnimation) == 0 &&
         isPossibleSize(width, height);
}

}  // namespace

std::optional<Picture> readWebp(ByteReader& bytes, std::int64_t size) {
  constexpr std::uint64_t kHeader = 8;
  constexpr std::uint64_t kShortest = 16;
  bytes.skip(4);  // "RIFF"
  const std::uint64_t end = bytes.littleEndian(4) + kHeader;
  const bool isWebp = bytes.text(4) == "WEBP";
  if (!isWebp || end < kHeader + kShortest || end > static_cast<std::uint64_t>(size))
    return std::nullopt;
  bool isExtended = false;
  bool hasAlpha = false;
  while (!bytes.failed()) {
    const std::string_view type = bytes.text(4);
    const std::uint64_t length = bytes.littleEndian(4);
    const std::uint64_t padded = length + length % 2;
    if (bytes.failed() || bytes.position() + padded > end) return std::nullopt;
    if (type == "VP8 ") return readLossy(bytes, length, hasAlpha);
    if (type == "VP8L") return readLossless(bytes, length);
    if (type == "ANIM" || type == "ANMF" || length == 0) return std::nullopt;
    const auto content = bytes.take(padded);
    if (bytes.failed()) break;
    if (type == "VP8X") {
      if (isExtended || !takeExtendedHeader(ByteReader(content))) return std::nullopt;
      isExtended = true;
    }
    if (type == "ALPH") {
      constexpr std::uint8_t kLastMethod = 1;
      if (hasAlpha || (content[0] & 3) > kLastMethod) return std::nullopt;
      hasAlpha = true;
    }
  }
  return std::nullopt;
}

}  // namespace kolum::headers
