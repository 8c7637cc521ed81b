#include "read/headers/picture_formats.h"

namespace kolum::headers {

// FFmpeg knows these without looking at any frame.
std::optional<Picture> readGif(ByteReader& bytes, std::int64_t size) {
  bytes.skip(6);  // "GIF89a"
  const std::uint64_t width = bytes.littleEndian(2);
  const std::uint64_t height = bytes.littleEndian(2);
  const std::uint64_t flags = bytes.littleEndian(1);
  bytes.skip(1);  // the background colour's index
  const std::uint64_t aspect = bytes.littleEndian(1);
  if (bytes.failed() || !isPossibleSize(width, height)) return std::nullopt;

  const bool hasPalette = (flags & 0x80) != 0;
  const std::uint64_t colours = hasPalette ? std::uint64_t{2} << (flags & 7) : 0;
  if (bytes.position() + colours * 3 > static_cast<std::uint64_t>(size)) return std::nullopt;

  Picture picture{.format = PictureFormat::kGif,
                  .width = static_cast<int>(width),
                  .height = static_cast<int>(height),
                  .pixelFormat = "bgra"};
  if (aspect == 0) return picture;
  constexpr int kUnit = 64;
  picture.sampleAspect = {static_cast<int>(aspect) + 15, kUnit};
  // FFmpeg ignores an aspect that would leave nothing of one side.
  constexpr std::uint64_t kSmallest = 16;
  const bool isSquare = picture.sampleAspect.num == kUnit;
  if (!isSquare && (width < kSmallest || height < kSmallest)) return std::nullopt;
  return picture;
}

}  // namespace kolum::headers
