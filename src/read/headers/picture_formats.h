// The readers of single formats, for picture.cpp.
#ifndef KOLUM_READ_HEADERS_PICTURE_FORMATS_H
#define KOLUM_READ_HEADERS_PICTURE_FORMATS_H

#include <climits>
#include <cstdint>
#include <optional>

#include "base/bytes.h"
#include "read/headers/picture.h"

namespace kolum::headers {

// BYTES: the beginning of a picture of SIZE bytes. They are failed afterwards if more are needed.
std::optional<Picture> readPng(ByteReader& bytes, std::int64_t size);
std::optional<Picture> readJpeg(ByteReader& bytes, std::int64_t size);

// FFmpeg's bound on pictures.
constexpr bool isPossibleSize(std::uint64_t width, std::uint64_t height) {
  constexpr std::uint64_t kMost = INT_MAX / 8;
  return width > 0 && height > 0 && width < kMost && height < kMost &&
         (width + 128) * (height + 128) < kMost;
}

}  // namespace kolum::headers

#endif
