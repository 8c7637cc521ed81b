#include "read/headers/picture.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "base/bytes.h"
#include "base/text.h"
#include "read/headers/picture_formats.h"

namespace kolum::headers {

namespace {

// What came of looking at a picture's first bytes.
struct Attempt {
  std::optional<Picture> picture;
  bool needsMore = false;
};

template <std::optional<Picture> (*kRead)(ByteReader& bytes, std::int64_t size)>
Attempt fromHead(Content& content) {
  ByteReader bytes(content.head());
  const auto picture = kRead(bytes, content.size());
  if (!bytes.failed()) return {picture, false};
  return {std::nullopt, static_cast<std::int64_t>(content.head().size()) < content.size()};
}

Attempt fromAnywhere(Content& content) {
  return {readTiff(content), false};
}

struct Format {
  std::string_view magic;
  Attempt (*read)(Content& content);
};

constexpr std::string_view kJpegMagic = "\xFF\xD8\xFF";

constexpr auto kFormats = std::to_array<Format>({
    {"\x89PNG\r\n\x1A\n", fromHead<readPng>},
    {kJpegMagic, fromHead<readJpeg>},
    {"GIF87a", fromHead<readGif>},
    {"GIF89a", fromHead<readGif>},
    {"BM", fromHead<readBmp>},
    {std::string_view("II*\0", 4), fromAnywhere},
    {std::string_view("MM\0*", 4), fromAnywhere},
    {"RIFF", fromHead<readWebp>},
});

// FFmpeg takes a long row of zeros for the end of the file; no file up to this size has one.
constexpr std::int64_t kLargestPicture = std::int64_t{64} << 20;

// How much of a file is read at first, and how much in all if that is not enough. Cameras may store
// megabytes of depth maps and previews before the picture.
constexpr std::size_t kFirstRead = 4096;
constexpr auto kLaterReads =
    std::to_array<std::size_t>({std::size_t{256} << 10, std::size_t{4} << 20});

// SOURCE: null if there is only HEAD.
Attempt attempt(std::span<const std::uint8_t> head, std::int64_t size,
                const media::Source* source) {
  if (size <= 0 || size > kLargestPicture || static_cast<std::int64_t>(head.size()) > size)
    return {};
  Content content(head, size, source);
  const auto format = std::find_if(kFormats.begin(), kFormats.end(), [head](const Format& each) {
    return textOf(head).starts_with(each.magic);
  });
  return format != kFormats.end() ? format->read(content) : Attempt{};
}

// FFmpeg is not certain of a JPEG file until it has seen all of it, except if it has a picture's
// name. Other names overrule the content.
bool isNamedPicture(std::string_view path) {
  constexpr auto kExtensions = std::to_array<std::string_view>(
      {".jpg", ".jpeg", ".jps", ".mpo", ".png", ".bmp", ".tif", ".tiff", ".webp"});
  return std::any_of(kExtensions.begin(), kExtensions.end(), [path](std::string_view extension) {
    return equalsIgnoringCase(extensionOf(path), extension);
  });
}

// The first COUNT bytes of a file; fewer if it ends before or cannot be read.
std::vector<std::uint8_t> headOf(const media::Source& source, std::size_t count) {
  const auto size = static_cast<std::uint64_t>(std::max<std::int64_t>(source.size(), 0));
  std::vector<std::uint8_t> head(std::min<std::uint64_t>(count, size));
  const std::ptrdiff_t got = source.readAt(0, head);
  head.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  return head;
}

}  // namespace

std::span<const std::uint8_t> Content::at(std::uint64_t position, std::size_t count) {
  constexpr std::size_t kPart = 4096;
  constexpr int kMostReads = 16;
  const auto end = static_cast<std::uint64_t>(size_);
  if (position > end || count > end - position || count > kPart) return {};
  if (position + count <= head_.size()) return head_.subspan(position, count);
  const bool isInPart = position >= partBegin_ && position + count <= partBegin_ + part_.size();
  if (!isInPart) {
    if (source_ == nullptr || ++reads_ > kMostReads) return {};
    part_.resize(kPart);
    const std::ptrdiff_t got = source_->readAt(static_cast<std::int64_t>(position), part_);
    part_.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    partBegin_ = position;
    if (part_.size() < count) return {};
  }
  return std::span(part_).subspan(position - partBegin_, count);
}

std::optional<Picture> readPicture(std::span<const std::uint8_t> head, std::int64_t size) {
  return attempt(head, size, nullptr).picture;
}

std::optional<Picture> readPicture(const media::Source& source) {
  const std::int64_t size = source.size();
  std::vector<std::uint8_t> head = headOf(source, kFirstRead);
  if (textOf(head).starts_with(kJpegMagic) && !isNamedPicture(source.name())) return std::nullopt;
  Attempt last = attempt(head, size, &source);
  for (const std::size_t count : kLaterReads) {
    if (!last.needsMore) break;
    head = headOf(source, count);
    last = attempt(head, size, &source);
  }
  return last.picture;
}

}  // namespace kolum::headers
