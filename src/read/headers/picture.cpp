#include "read/headers/picture.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "base/text.h"
#include "read/headers/picture_formats.h"

namespace kolum::headers {

namespace {

using Reader = std::optional<Picture> (*)(ByteReader& bytes, std::int64_t size);

struct Format {
  std::string_view magic;
  Reader read;
};

constexpr std::string_view kJpegMagic = "\xFF\xD8\xFF";

constexpr auto kFormats = std::to_array<Format>({
    {"\x89PNG\r\n\x1A\n", readPng},
    {kJpegMagic, readJpeg},
});

// FFmpeg takes a long row of zeros for the end of the file; no file up to this size has one.
constexpr std::int64_t kLargestPicture = std::int64_t{64} << 20;

// How much of a file is read at first, and how much in all if that is not enough. Cameras may store
// megabytes of depth maps and previews before the picture.
constexpr std::size_t kFirstRead = 4096;
constexpr auto kLaterReads = std::to_array<std::size_t>({256 * 1024, 4 * 1024 * 1024});

struct Attempt {
  std::optional<Picture> picture;
  bool needsMore = false;
};

std::string_view textOf(std::span<const std::uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

Attempt attempt(std::span<const std::uint8_t> head, std::int64_t size) {
  if (size <= 0 || size > kLargestPicture || static_cast<std::int64_t>(head.size()) > size)
    return {};
  for (const Format& format : kFormats) {
    if (!textOf(head).starts_with(format.magic)) continue;
    ByteReader bytes(head);
    const auto picture = format.read(bytes, size);
    if (!bytes.failed()) return {picture, false};
    return {std::nullopt, static_cast<std::int64_t>(head.size()) < size};
  }
  return {};
}

// Names by which FFmpeg takes a file for a picture, whatever else its content looks like, and those
// that mean nothing to it.
constexpr auto kPictureNames = std::to_array<std::string_view>(
    {".jpg", ".jpeg", ".jps", ".mpo", ".png", ".bmp", ".tif", ".tiff", ".webp"});
constexpr auto kPlainNames = std::to_array<std::string_view>({"", ".jpe", ".jfif"});

template <std::size_t kCount>
bool isOneOf(std::string_view extension, const std::array<std::string_view, kCount>& names) {
  return std::any_of(names.begin(), names.end(), [extension](std::string_view name) {
    return equalsIgnoringCase(extension, name);
  });
}

// How many bytes of a JPEG file may be used. Without a picture's name, FFmpeg is certain of the
// format only if these first bytes show it; some other names overrule the content.
std::size_t jpegWindow(std::string_view path) {
  constexpr std::size_t kFirstLook = 2048;
  const std::string_view extension = extensionOf(path.substr(path.rfind('/') + 1));
  if (isOneOf(extension, kPictureNames)) return kLaterReads.back();
  return isOneOf(extension, kPlainNames) ? kFirstLook : 0;
}

// The first bytes of a file; fewer than COUNT if it ends before or cannot be read.
std::vector<std::uint8_t> headOf(const media::Source& source, std::size_t count) {
  std::vector<std::uint8_t> head(count);
  const std::ptrdiff_t got = source.readAt(0, head);
  head.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  return head;
}

}  // namespace

std::optional<Picture> readPicture(std::span<const std::uint8_t> head, std::int64_t size) {
  return attempt(head, size).picture;
}

std::optional<Picture> readPicture(const media::Source& source) {
  const std::int64_t size = source.size();
  std::vector<std::uint8_t> head = headOf(source, kFirstRead);
  const std::size_t window =
      textOf(head).starts_with(kJpegMagic) ? jpegWindow(source.name()) : kLaterReads.back();
  if (head.size() > window) head.resize(window);
  Attempt last = attempt(head, size);
  for (const std::size_t count : kLaterReads) {
    if (!last.needsMore || count > window) break;
    head = headOf(source, count);
    last = attempt(head, size);
  }
  return last.picture;
}

}  // namespace kolum::headers
