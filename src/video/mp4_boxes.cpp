#include "video/mp4_boxes.h"

#include <kolum/identifiers.h>
#include <kolum/video.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "support/file.h"

namespace kolum::video {

namespace {

constexpr std::size_t kBrandWindow = 64;
constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kLargeHeaderSize = 16;

// A box of any other type ends the walk.
constexpr std::array<std::string_view, 10> kKnownBoxes = {
    "free", "junk", "mdat", "moov", "pnot", "skip", "wide", "PICT", "uuid", "ftyp",
};

// Tells a fast-start file from a plain one.
struct LayoutCodes {
  std::uint32_t fastStart;
  std::uint32_t plain;
};

// A brand is told by its first characters; the first row that fits wins. Brands whose two codes
// differ need the box walk; "isom" is never reported as fast start, which hosts count on.
struct BrandRow {
  std::string_view prefix;
  LayoutCodes codes;
};

constexpr auto kBrands = std::to_array<BrandRow>({
    {"M4A", {MPEG4_M4A, MPEG4_M4A}},
    {"M4V", {MPEG4_M4V, MPEG4_M4V}},
    {"MSNV", {MPEG4_MSNV, MPEG4_MSNV}},
    {"mp4", {MPEG4_MP4_FASTSTART, MPEG4_MP4}},
    {"mjp", {MPEG4_MJP2, MPEG4_MJP2}},
    {"qt", {MPEG4_MOV_FASTSTART, MPEG4_MOV}},
    {"isom", {MPEG4_ISOM, MPEG4_ISOM}},
    {"3g2", {MPEG4_3G2, MPEG4_3G2}},
    {"3gp", {MPEG4_3GP, MPEG4_3GP}},
});

std::uint64_t bigEndian(std::span<const std::uint8_t> bytes) {
  std::uint64_t value = 0;
  for (const std::uint8_t byte : bytes) value = value << 8 | byte;
  return value;
}

std::string_view asText(std::span<const std::uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// The size that a step over the box counts with, signed on purpose: a 64-bit size beyond the
// signed range is negative and ends the walk instead of leading it in circles.
struct Box {
  std::int64_t offset = 0;
  std::int64_t size = 0;
  std::array<std::uint8_t, 4> type = {};

  bool is(std::string_view name) const { return asText(type) == name; }
  bool isKnown() const {
    return std::any_of(kKnownBoxes.begin(), kKnownBoxes.end(),
                       [this](std::string_view name) { return is(name); });
  }
};

std::optional<Box> readBox(const File& file, std::int64_t offset) {
  std::array<std::uint8_t, kHeaderSize> header = {};
  if (file.readAt(offset, header) != static_cast<std::ptrdiff_t>(header.size()))
    return std::nullopt;
  Box box;
  box.offset = offset;
  box.size = static_cast<std::int64_t>(bigEndian(std::span(header).first<4>()));
  std::copy(header.begin() + 4, header.end(), box.type.begin());
  return box;
}

// False when the 64-bit size cannot be read.
bool readLargeSize(const File& file, Box& box) {
  std::array<std::uint8_t, kLargeHeaderSize - kHeaderSize> large = {};
  const auto offset = box.offset + static_cast<std::int64_t>(kHeaderSize);
  if (file.readAt(offset, large) != static_cast<std::ptrdiff_t>(large.size())) return false;
  box.size = static_cast<std::int64_t>(bigEndian(large));
  return true;
}

// Where the next box starts; empty where no file position is. Only the file system knows how far
// positions go beyond the end of the file.
std::optional<std::int64_t> endOf(const Box& box, const File& file, std::int64_t fileSize) {
  std::int64_t end = 0;
  if (__builtin_add_overflow(box.offset, box.size, &end) || end < 0) return std::nullopt;
  if (end > fileSize && !file.canSeekTo(end)) return std::nullopt;
  return end;
}

MoovPosition walk(const File& file, std::int64_t fileSize) {
  bool lastIsMoov = false;
  std::int64_t offset = 0;
  while (const auto found = readBox(file, offset)) {
    Box box = *found;
    lastIsMoov = box.is("moov");
    const bool isFileType = box.is("ftyp");
    if (!isFileType && box.size == 1 && !readLargeSize(file, box)) break;

    const auto end = endOf(box, file, fileSize);
    if (!end || (isFileType && *end > fileSize)) return MoovPosition::kUnreadable;
    if (!box.isKnown()) return MoovPosition::kLastOrUnknownBox;
    if (box.size < static_cast<std::int64_t>(kHeaderSize)) break;
    offset = *end;
  }
  return lastIsMoov ? MoovPosition::kLastOrUnknownBox : MoovPosition::kNotLast;
}

}  // namespace

MoovPosition moovPosition(const char* path) {
  const auto file = File::open(path);
  if (!file) return MoovPosition::kUnreadable;
  return walk(*file, file->size());
}

std::optional<std::uint32_t> mp4SubFormat(const char* path) {
  std::array<std::uint8_t, kBrandWindow> window = {};
  {
    const auto file = File::open(path);
    if (!file || file->readAt(0, window) != static_cast<std::ptrdiff_t>(window.size()))
      return std::nullopt;
  }
  const std::string_view text = asText(window);
  const std::size_t found = text.find("ftyp");
  // Not found is beyond the window, too. The last start position leaves a byte behind the brand.
  constexpr std::size_t kLastStart = 55;
  if (found > kLastStart) return std::nullopt;
  const std::string_view brand = text.substr(found + 4, 4);

  const auto row = std::find_if(kBrands.begin(), kBrands.end(), [&](const BrandRow& candidate) {
    return brand.starts_with(candidate.prefix);
  });
  if (row == kBrands.end()) return 0;
  if (row->codes.fastStart == row->codes.plain) return row->codes.plain;
  return moovPosition(path) == MoovPosition::kNotLast ? row->codes.fastStart : row->codes.plain;
}

}  // namespace kolum::video

int GetMp4SubFormat(const char* path, unsigned int* subFormat) {
  if (subFormat == nullptr) return 1;
  *subFormat = 0;
  if (path == nullptr) return 1;
  const auto found = kolum::video::mp4SubFormat(path);
  if (!found) return 1;
  *subFormat = *found;
  return 0;
}

int CheckMp4MoovAtEnd(const char* path) {
  if (path == nullptr) return static_cast<int>(kolum::video::MoovPosition::kUnreadable);
  return static_cast<int>(kolum::video::moovPosition(path));
}
