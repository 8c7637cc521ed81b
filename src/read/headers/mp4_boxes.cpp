#include "read/headers/mp4_boxes.h"

#include <kolum/identifiers.h>

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <utility>

#include "base/bytes.h"
#include "base/clean_text.h"

namespace kolum::headers {

namespace {

constexpr std::size_t kBrandWindow = 64;
constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kLargeHeaderSize = 16;

// Any other box type ends the walk.
constexpr std::array<std::string_view, 10> kKnownBoxes = {
    "free", "junk", "mdat", "moov", "pnot", "skip", "wide", "PICT", "uuid", "ftyp",
};

// The codes of a fast-start file and of a plain one.
struct LayoutCodes {
  std::uint32_t fastStart;
  std::uint32_t plain;
};

// A brand is recognised by its first characters; the first matching row wins. Brands whose two
// codes differ need the box walk; "isom" is never reported as fast-start: identifiers in databases
// depend on it.
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

// The size is signed: a 64-bit size beyond the signed range is negative and ends the walk instead
// of leading it in circles.
struct Box {
  std::int64_t offset = 0;
  std::int64_t size = 0;
  std::array<std::uint8_t, 4> type = {};

  bool is(std::string_view name) const { return textOf(type) == name; }
  bool isKnown() const {
    return std::any_of(kKnownBoxes.begin(), kKnownBoxes.end(),
                       [this](std::string_view name) { return is(name); });
  }
};

// Reads a file in windows: small boxes often follow each other, and files may consist of millions.
class Windows {
 public:
  explicit Windows(const media::Source& source) : source_(source) {}

  // SIZE bytes at OFFSET; empty if the file ends before. Valid until the next call.
  std::optional<std::span<const std::uint8_t>> bytesAt(std::int64_t offset, std::size_t size) {
    const bool isInWindow = offset >= begin_ && offset - begin_ <= size_ &&
                            size_ - (offset - begin_) >= static_cast<std::ptrdiff_t>(size);
    if (!isInWindow) {
      begin_ = offset;
      size_ = source_.readAt(offset, window_);
    }
    if (size_ - (offset - begin_) < static_cast<std::ptrdiff_t>(size)) return std::nullopt;
    return std::span(window_).subspan(static_cast<std::size_t>(offset - begin_), size);
  }

 private:
  const media::Source& source_;
  std::array<std::uint8_t, 4096> window_ = {};
  std::int64_t begin_ = 0;
  std::ptrdiff_t size_ = 0;
};

std::optional<Box> readBox(Windows& file, std::int64_t offset) {
  const auto header = file.bytesAt(offset, kHeaderSize);
  if (!header) return std::nullopt;
  ByteReader bytes(*header);
  Box box;
  box.offset = offset;
  box.size = static_cast<std::int64_t>(bytes.bigEndian(4));
  std::ranges::copy(bytes.take(box.type.size()), box.type.begin());
  return box;
}

// False if the 64-bit size cannot be read.
bool readLargeSize(Windows& file, Box& box) {
  const auto large = file.bytesAt(box.offset + static_cast<std::int64_t>(kHeaderSize),
                                  kLargeHeaderSize - kHeaderSize);
  if (!large) return false;
  box.size = static_cast<std::int64_t>(ByteReader(*large).bigEndian(large->size()));
  return true;
}

// Where the next box starts; empty if that is not a file position. Only the file system knows how
// far positions reach beyond the end of the file.
std::optional<std::int64_t> endOf(const Box& box, const media::Source& source) {
  std::int64_t end = 0;
  if (__builtin_add_overflow(box.offset, box.size, &end) || end < 0) return std::nullopt;
  if (end > source.size() && !source.canSeekTo(end)) return std::nullopt;
  return end;
}

struct Range {
  std::int64_t begin = 0;
  std::int64_t end = 0;
};

// Calls TAKE with the type and the content of each box in RANGE, until one makes no sense. LEFT
// counts the boxes that may still be visited.
template <typename Take>
void forEachBox(Windows& file, Range range, int& left, Take take) {
  while (range.begin < range.end && left-- > 0) {
    auto box = readBox(file, range.begin);
    if (!box) return;
    std::int64_t header = kHeaderSize;
    if (box->size == 1) {
      if (!readLargeSize(file, *box)) return;
      header = kLargeHeaderSize;
    }
    if (box->size == 0) box->size = range.end - range.begin;
    if (box->size < header || box->size > range.end - range.begin) return;
    const std::int64_t end = range.begin + box->size;
    take(*box, Range{range.begin + header, end});
    range.begin = end;
  }
}

std::uint32_t trackNumber(Windows& file, Range header) {
  constexpr std::int64_t kTimes = 4;  // behind the version and the flags
  const auto version = file.bytesAt(header.begin, 1);
  if (!version) return 0;
  const std::int64_t sizeOfTimes = version->front() == 1 ? 16 : 8;
  const auto number = file.bytesAt(header.begin + kTimes + sizeOfTimes, 4);
  return number ? static_cast<std::uint32_t>(ByteReader(*number).bigEndian(4)) : 0;
}

std::string textIn(Windows& file, Range content) {
  constexpr std::int64_t kLongestName = 1000;
  const auto size = std::min(content.end - content.begin, kLongestName);
  const auto bytes = file.bytesAt(content.begin, static_cast<std::size_t>(size));
  return bytes ? cleanText(textOf(*bytes)) : "";
}

TrackName nameOfTrack(Windows& file, Range track, int& left) {
  TrackName found;
  forEachBox(file, track, left, [&](const Box& box, Range content) {
    if (box.is("tkhd")) found.track = trackNumber(file, content);
    if (!box.is("udta")) return;
    forEachBox(file, content, left, [&](const Box& inner, Range text) {
      if (inner.is("name")) found.name = textIn(file, text);
    });
  });
  return found;
}

}  // namespace

MoovPosition moovPosition(const media::Source& source) {
  Windows file(source);
  bool lastIsMoov = false;
  std::int64_t offset = 0;
  while (const auto found = readBox(file, offset)) {
    Box box = *found;
    lastIsMoov = box.is("moov");
    const bool isFileType = box.is("ftyp");
    if (!isFileType && box.size == 1 && !readLargeSize(file, box)) break;
    const auto end = endOf(box, source);
    if (!end || (isFileType && *end > source.size())) return MoovPosition::kUnreadable;
    if (!box.isKnown()) return MoovPosition::kLastOrUnknownBox;
    if (box.size < static_cast<std::int64_t>(kHeaderSize)) break;
    offset = *end;
  }
  return lastIsMoov ? MoovPosition::kLastOrUnknownBox : MoovPosition::kNotLast;
}

std::optional<std::uint32_t> mp4SubFormat(const media::Source& source) {
  std::array<std::uint8_t, kBrandWindow> window = {};
  if (source.readAt(0, window) != static_cast<std::ptrdiff_t>(window.size())) return std::nullopt;
  const std::string_view text = textOf(window);
  const std::size_t found = text.find("ftyp");
  // npos also exceeds kLastStart. The last allowed start leaves one byte after the brand.
  constexpr std::size_t kLastStart = 55;
  if (found > kLastStart) return std::nullopt;
  const std::string_view brand = text.substr(found + 4, 4);

  const auto row = std::find_if(kBrands.begin(), kBrands.end(), [&](const BrandRow& candidate) {
    return brand.starts_with(candidate.prefix);
  });
  if (row == kBrands.end()) return 0;
  if (row->codes.fastStart == row->codes.plain) return row->codes.plain;
  return moovPosition(source) == MoovPosition::kNotLast ? row->codes.fastStart : row->codes.plain;
}

std::vector<TrackName> mp4TrackNames(const media::Source& source) {
  // Some dozens per track, and a thousand tracks are the most that is read.
  int left = 20000;
  std::size_t textLeft = 65536;
  Windows file(source);
  std::vector<TrackName> names;
  const auto addTrack = [&](const Box& box, Range content) {
    if (!box.is("trak")) return;
    TrackName found = nameOfTrack(file, content, left);
    if (found.track == 0 || found.name.empty() || found.name.size() > textLeft) return;
    textLeft -= found.name.size();
    names.push_back(std::move(found));
  };
  forEachBox(file, {.begin = 0, .end = source.size()}, left, [&](const Box& box, Range content) {
    if (box.is("moov")) forEachBox(file, content, left, addTrack);
  });
  return names;
}

}  // namespace kolum::headers
