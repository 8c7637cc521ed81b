#include "read/exif/boxes.h"

#include <array>
#include <string>

#include "base/bytes.h"

namespace kolum::exif {

namespace {

constexpr int kMostBoxes = 1000;
constexpr std::uint64_t kShortHeader = 8;
constexpr std::uint64_t kLongHeader = 16;

struct BoxInFile {
  std::string type;
  FileRange content;
};

// The box that begins at POSITION; empty if it does not fit before END.
std::optional<BoxInFile> boxAt(const media::Source& source, std::int64_t position,
                               std::int64_t end) {
  std::array<std::uint8_t, kLongHeader> header = {};
  const std::ptrdiff_t got = source.readAt(position, header);
  if (got < static_cast<std::ptrdiff_t>(kShortHeader) || position >= end) return std::nullopt;
  const std::span<const std::uint8_t> bytes = header;
  ByteReader reader(bytes.first(static_cast<std::size_t>(got)));
  auto size = reader.bigEndian(4);
  const std::string type(reader.text(4));
  const bool isLong = size == 1;
  if (isLong) size = reader.bigEndian(8);
  const auto left = static_cast<std::uint64_t>(end - position);
  if (size == 0) size = left;
  const std::uint64_t headerSize = isLong ? kLongHeader : kShortHeader;
  if (reader.failed() || size < headerSize || size > left) return std::nullopt;
  return BoxInFile{type,
                   {.begin = position + static_cast<std::int64_t>(headerSize),
                    .end = position + static_cast<std::int64_t>(size)}};
}

template <typename IsWanted>
std::optional<FileRange> findBoxThat(const media::Source& source, FileRange range,
                                     IsWanted isWanted) {
  for (int i = 0; i < kMostBoxes; ++i) {
    const auto box = boxAt(source, range.begin, range.end);
    if (!box) break;
    if (isWanted(*box)) return box->content;
    range.begin = box->content.end;
  }
  return std::nullopt;
}

}  // namespace

void forEachBox(std::span<const std::uint8_t> bytes, const std::function<void(const Box&)>& take) {
  ByteReader reader(bytes);
  while (!reader.failed() && reader.left() >= kShortHeader) {
    const std::size_t before = reader.left();
    auto size = reader.bigEndian(4);
    const std::string_view type = reader.text(4);
    if (size == 1) size = reader.bigEndian(8);
    const std::size_t headerSize = before - reader.left();
    if (size == 0) size = before;
    if (size < headerSize) return;
    const auto content = reader.take(size - headerSize);
    if (!reader.failed()) take({type, content});
  }
}

std::optional<FileRange> findBox(const media::Source& source, FileRange range,
                                 std::string_view type) {
  return findBoxThat(source, range, [&](const BoxInFile& box) { return box.type == type; });
}

std::optional<FileRange> findBoxWith(const media::Source& source, FileRange range,
                                     std::string_view type, std::string_view beginning) {
  auto found = findBoxThat(source, range, [&](const BoxInFile& box) {
    return box.type == type && box.content.end - box.content.begin >= std::ssize(beginning) &&
           textOf(bytesAt(source, box.content.begin, beginning.size())) == beginning;
  });
  if (found) found->begin += std::ssize(beginning);
  return found;
}

Bytes contentOf(const media::Source& source, const std::optional<FileRange>& range) {
  if (!range || range->end < range->begin) return {};
  return bytesAt(source, range->begin, static_cast<std::uint64_t>(range->end - range->begin));
}

Bytes contentOfBox(const media::Source& source, FileRange range, std::string_view type) {
  return contentOf(source, findBox(source, range, type));
}

}  // namespace kolum::exif
