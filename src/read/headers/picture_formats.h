// The readers of single formats, for picture.cpp.
#ifndef KOLUM_READ_HEADERS_PICTURE_FORMATS_H
#define KOLUM_READ_HEADERS_PICTURE_FORMATS_H

#include <climits>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/bytes.h"
#include "media/source.h"
#include "read/headers/picture.h"

namespace kolum::headers {

// BYTES: the beginning of a picture of SIZE bytes. They are failed afterwards if more are needed.
std::optional<Picture> readBmp(ByteReader& bytes, std::int64_t size);
std::optional<Picture> readGif(ByteReader& bytes, std::int64_t size);
std::optional<Picture> readJpeg(ByteReader& bytes, std::int64_t size);
std::optional<Picture> readPng(ByteReader& bytes, std::int64_t size);
std::optional<Picture> readWebp(ByteReader& bytes, std::int64_t size);

// A picture whose header may be anywhere in it.
class Content {
 public:
  // SOURCE: the file that begins with HEAD; null if only HEAD can be read.
  Content(std::span<const std::uint8_t> head, std::int64_t size, const media::Source* source)
      : head_(head), size_(size), source_(source) {}

  std::span<const std::uint8_t> head() const { return head_; }
  std::int64_t size() const { return size_; }
  // COUNT bytes at POSITION, valid until the next call. None if they are beyond the end or cannot
  // be read, or if there were too many calls.
  std::span<const std::uint8_t> at(std::uint64_t position, std::size_t count);

 private:
  std::span<const std::uint8_t> head_;
  std::int64_t size_;
  const media::Source* source_;
  std::vector<std::uint8_t> part_;
  std::uint64_t partBegin_ = 0;
  int reads_ = 0;
};

std::optional<Picture> readTiff(Content& content);

// FFmpeg's bound on pictures.
constexpr bool isPossibleSize(std::uint64_t width, std::uint64_t height) {
  constexpr std::uint64_t kMost = INT_MAX / 8;
  return width > 0 && height > 0 && width < kMost && height < kMost &&
         (width + 128) * (height + 128) < kMost;
}

}  // namespace kolum::headers

#endif
