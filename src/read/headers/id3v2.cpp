#include "read/headers/id3v2.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <vector>

#include "base/bytes.h"
#include "media/budget.h"

namespace kolum::headers {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::int64_t kHeaderSize = 10;
// Deflate's best ratio: shorter tags cannot inflate to more than the budget.
constexpr std::int64_t kBestRatio = 1032;
constexpr std::int64_t kHarmless = media::budget::kInflatedTag / kBestRatio;

template <std::size_t kSize>
std::optional<std::array<std::uint8_t, kSize>> bytesAt(const media::Source& source,
                                                       std::int64_t position) {
  std::array<std::uint8_t, kSize> bytes = {};
  if (source.readAt(position, bytes) != static_cast<std::ptrdiff_t>(kSize)) return std::nullopt;
  return bytes;
}

// Seven bits per byte.
std::int64_t synchsafe(std::uint64_t number) {
  std::int64_t value = 0;
  for (int shift = 24; shift >= 0; shift -= 8)
    value = value << 7 | static_cast<std::int64_t>(number >> shift & 0x7F);
  return value;
}

bool isFrameId(std::uint8_t byte) {
  return std::isupper(byte) != 0 || std::isdigit(byte) != 0;
}

// Whether a frame's header (of versions 3 and 4) may begin here whose flags say "compressed", and
// which is followed by the size it inflates to and the first bytes that deflate writes.
struct CompressedFrame {
  static constexpr std::size_t kLongestHeader = 18;

  static std::int64_t inflatedSize(Bytes bytes) {
    constexpr std::size_t kFlags = 9;
    constexpr unsigned kCompressed = 0x88;  // 0x80 in version 3, 0x08 in version 4
    constexpr std::size_t kMostFurtherBytes = 2;
    if (bytes.size() < kLongestHeader ||
        !std::all_of(bytes.begin(), bytes.begin() + 4, isFrameId) ||
        (bytes[kFlags] & kCompressed) == 0)
      return 0;
    for (std::size_t further = 0; further <= kMostFurtherBytes; ++further) {
      ByteReader reader(bytes.subspan(kHeaderSize + further));
      const auto size = static_cast<std::int64_t>(reader.bigEndian(4));
      if (isDeflated(reader.bigEndian(2))) return size;
    }
    return 0;
  }

  static bool isDeflated(std::uint64_t header) {
    constexpr unsigned kMethod = 8;
    constexpr unsigned kCheck = 31;
    return (header >> 8 & 0x0F) == kMethod && header % kCheck == 0;
  }
};

// What all that looks like a compressed frame would inflate to. Searching every byte makes it
// independent of how a reader of the tag walks along its frames.
std::int64_t inflatedSize(const media::Source& source, std::int64_t begin, std::int64_t end) {
  constexpr std::size_t kWindow = 65536;
  std::vector<std::uint8_t> window(kWindow);
  std::int64_t total = 0;
  for (std::int64_t at = begin; at < end && total <= media::budget::kInflatedTag;) {
    const std::ptrdiff_t got = source.readAt(at, window);
    if (got < static_cast<std::ptrdiff_t>(CompressedFrame::kLongestHeader)) break;
    const Bytes bytes = Bytes(window).first(static_cast<std::size_t>(got));
    const std::size_t last = bytes.size() - CompressedFrame::kLongestHeader;
    for (std::size_t i = 0; i <= last; ++i)
      if (isFrameId(bytes[i])) total += CompressedFrame::inflatedSize(bytes.subspan(i));
    at += static_cast<std::int64_t>(last) + 1;
  }
  return total;
}

enum class Walk { kPlain, kCompressed, kIrregular };

// Walks along the frames of a tag, as its readers do.
Walk walk(const media::Source& source, std::int64_t begin, std::int64_t end, unsigned version) {
  constexpr int kMostFrames = 1000;
  constexpr unsigned kCompressed = 0x88;
  for (int i = 0; i < kMostFrames; ++i) {
    if (begin + kHeaderSize > end) return Walk::kPlain;
    const auto header = bytesAt<kHeaderSize>(source, begin);
    if (!header) return Walk::kPlain;
    if ((*header)[0] == 0) return Walk::kPlain;  // padding
    if (!std::all_of(header->begin(), header->begin() + 4, isFrameId)) return Walk::kIrregular;
    ByteReader reader(*header);
    reader.skip(4);
    const std::uint64_t size = reader.bigEndian(4);
    reader.skip(1);
    if ((reader.bigEndian(1) & kCompressed) != 0) return Walk::kCompressed;
    const bool isSynchsafe = version == 4 && (size & 0x80808080) == 0;
    // Some writers use plain sizes in version 4.
    if (version == 4 && !isSynchsafe) return Walk::kIrregular;
    begin += kHeaderSize + (isSynchsafe ? synchsafe(size) : static_cast<std::int64_t>(size));
  }
  return Walk::kIrregular;
}

// The end of the tag at a position, which is blanked if it inflates too far; the position itself if
// there is no tag.
std::int64_t checkTag(const media::Source& source, std::int64_t begin) {
  constexpr unsigned kFrameCompression = 3;  // versions before have no compressed frames
  const auto header = bytesAt<kHeaderSize>(source, begin);
  const std::int64_t size = header ? id3v2Size(*header) : 0;
  if (size == 0) return begin;
  const unsigned version = (*header)[3];
  const unsigned flags = (*header)[5];
  const std::int64_t end = begin + size;
  if (size <= kHarmless || version < kFrameCompression) return end;
  // An extended header or unsynchronisation: readers differ.
  const Walk found =
      flags == 0 ? walk(source, begin + kHeaderSize, end, version) : Walk::kIrregular;
  if (found != Walk::kPlain &&
      inflatedSize(source, begin + kHeaderSize, end) > media::budget::kInflatedTag)
    source.blank(begin + kHeaderSize, end);
  return end;
}

// Chunks of a file, each of a name and a size.
struct ChunkedFile {
  std::string_view magic;
  std::string_view type;  // behind the file's own name and size
  bool isBigEndian;
  std::size_t sizeBytes;
};

constexpr ChunkedFile kChunkedFiles[] = {
    {"FORM", "AIFF", true, 4},
    {"FORM", "AIFC", true, 4},
    {"RIFF", "WAVE", false, 4},
    {"FRM8", "DSD ", true, 8},
};

void checkChunks(const media::Source& source, const ChunkedFile& file) {
  constexpr int kMostChunks = 1000;
  constexpr std::size_t kName = 4;
  std::int64_t at = static_cast<std::int64_t>(kName + file.sizeBytes + file.type.size());
  for (int i = 0; i < kMostChunks; ++i) {
    const auto header = bytesAt<12>(source, at);
    if (!header) return;
    ByteReader reader(*header);
    const std::string_view name = reader.text(kName);
    const std::uint64_t size =
        file.isBigEndian ? reader.bigEndian(file.sizeBytes) : reader.littleEndian(file.sizeBytes);
    at += static_cast<std::int64_t>(kName + file.sizeBytes);
    if (name == "ID3 " || name == "id3 ") checkTag(source, at);
    if (size > static_cast<std::uint64_t>(source.size())) return;
    at += static_cast<std::int64_t>(size + size % 2);
  }
}

}  // namespace

std::int64_t id3v2Size(Bytes head) {
  constexpr std::uint64_t kHasFooter = 0x10;
  ByteReader reader(head);
  if (reader.text(3) != "ID3") return 0;
  reader.skip(2);
  const bool hasFooter = (reader.bigEndian(1) & kHasFooter) != 0;
  const std::int64_t size = synchsafe(reader.bigEndian(4));
  if (reader.failed()) return 0;
  return kHeaderSize + size + (hasFooter ? kHeaderSize : 0);
}

std::int64_t dsfTagPosition(Bytes head) {
  constexpr std::size_t kPointer = 20;
  ByteReader reader(head);
  if (reader.text(4) != "DSD ") return 0;
  reader.skip(kPointer - 4);
  const std::uint64_t position = reader.littleEndian(8);
  return position <= INT64_MAX && !reader.failed() ? static_cast<std::int64_t>(position) : 0;
}

void blankInflatingTags(const media::Source& source) {
  constexpr int kMostTags = 100;
  std::int64_t position = 0;
  for (int i = 0; i < kMostTags; ++i) {
    const std::int64_t end = checkTag(source, position);
    if (end == position) break;
    position = end;
  }
  const Bytes head = source.head();
  if (const std::int64_t tag = dsfTagPosition(head); tag > 0) checkTag(source, tag);
  ByteReader reader(head);
  const std::string_view magic = reader.text(4);
  for (const ChunkedFile& file : kChunkedFiles) {
    if (magic != file.magic) continue;
    ByteReader type(head);
    type.skip(4 + file.sizeBytes);
    if (type.text(file.type.size()) == file.type) checkChunks(source, file);
  }
}

}  // namespace kolum::headers
