// TIFF files and the raw files of cameras, which are TIFF, too: up to 100 MB of pictures with some
// KB of tags anywhere between them.
#include <algorithm>
#include <array>
#include <set>
#include <string_view>
#include <vector>

#include "base/bytes.h"
#include "read/exif/blocks.h"
#include "read/exif/boxes.h"

namespace kolum::exif {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kEntrySize = 12;
// Exiv2 refuses directories with more.
constexpr std::size_t kMostEntries = 256;
constexpr std::size_t kMostDirectories = 64;
// The space that tags are spread over; zeros take no memory.
constexpr std::int64_t kLargestFile = std::int64_t{512} << 20;

struct TagRow {
  unsigned tag;
  std::size_t most;  // bytes
};

// Of all others, only as much as any text or table needs.
constexpr std::size_t kMostOfOthers = 65536;
constexpr unsigned kXmpTag = 0x02BC;
constexpr TagRow kLargeTags[] = {
    {0x002E, std::size_t{1} << 18},  // Panasonic's preview, at whose beginning Exif stands
    {kXmpTag, kLargestBlock},       {0x83BB, std::size_t{1} << 20},  // IPTC
    {0x8649, std::size_t{1} << 20},                                  // Photoshop's resources
    {0x8773, kLargestBlock},                                         // the colour profile
    {0x927C, kLargestBlock},                                         // the camera's own notes
};

// Directories below a directory.
constexpr unsigned kDirectoryTags[] = {0x014A, 0x8769, 0x8825, 0xA005};

// What is not copied: pictures and tables for their decoders, some of them large.
std::size_t mostOf(unsigned tag) {
  const auto* row = std::ranges::find(kLargeTags, tag, &TagRow::tag);
  return row != std::end(kLargeTags) ? row->most : kMostOfOthers;
}

// Of one value; 0 if there is no such type.
std::size_t sizeOfType(unsigned type) {
  constexpr std::array<std::uint8_t, 14> kSizes = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};
  return type < kSizes.size() ? kSizes[type] : 0;
}

struct Piece {
  std::int64_t offset;
  Bytes bytes;
};

// A TIFF structure: a file, or bytes in memory.
class Input {
 public:
  explicit Input(const media::Source& source) : source_(&source) {}
  explicit Input(std::span<const std::uint8_t> memory) : memory_(memory) {}

  // Empty unless all of them are there.
  Bytes at(std::int64_t offset, std::uint64_t size) const {
    if (source_ != nullptr) return bytesAt(*source_, offset, size);
    ByteReader reader(memory_);
    reader.skip(static_cast<std::size_t>(offset));
    const auto bytes = reader.take(size);
    return {bytes.begin(), bytes.end()};
  }

  // Empty if it is a file: then only what is known to be of use is copied.
  std::span<const std::uint8_t> memory() const { return memory_; }

 private:
  const media::Source* source_ = nullptr;
  std::span<const std::uint8_t> memory_;
};

// Collects the directories of a structure and their values.
class Collector {
 public:
  Collector(const Input& input, bool isBigEndian) : input_(input), isBigEndian_(isBigEndian) {}

  void run(std::int64_t first) {
    // Makers' notes may refer to bytes outside of them.
    if (const auto all = input_.memory(); !all.empty())
      pieces_.push_back({0, Bytes(all.begin(), all.end())});
    // Some cameras have more than the header there.
    if (!copy(0, kHeaderSize * 4)) copy(0, kHeaderSize);
    waiting_.push_back(first);
    while (!waiting_.empty() && seen_.size() < kMostDirectories) {
      const std::int64_t next = waiting_.back();
      waiting_.pop_back();
      if (next > 0 && seen_.insert(next).second) takeDirectory(next);
    }
  }

  std::string takeXmp() { return std::move(xmp_); }

  SparseMemory memory() const {
    std::int64_t end = 0;
    for (const Piece& piece : pieces_) end = std::max(end, piece.offset + std::ssize(piece.bytes));
    SparseMemory memory(static_cast<std::size_t>(end));
    // Values first: a directory that is also a value must keep its changed sizes.
    for (const bool isDirectory : {false, true})
      for (const Piece& piece : pieces_)
        if (directories_.contains(piece.offset) == isDirectory)
          std::ranges::copy(piece.bytes, memory.bytes().begin() + piece.offset);
    return memory;
  }

 private:
  std::uint64_t number(ByteReader& reader, std::size_t size) const {
    return isBigEndian_ ? reader.bigEndian(size) : reader.littleEndian(size);
  }
  void putNumber(std::span<std::uint8_t> out, std::uint64_t value) const {
    for (std::size_t i = 0; i < out.size(); ++i)
      out[isBigEndian_ ? out.size() - 1 - i : i] = static_cast<std::uint8_t>(value >> 8 * i);
  }

  // Whether it is there and no more than what all values together may have.
  bool copy(std::int64_t offset, std::uint64_t size) {
    if (offset > kLargestFile || size > kLargestBlock - copied_) return false;
    Bytes bytes = input_.at(offset, size);
    if (bytes.empty()) return false;
    copied_ += bytes.size();
    pieces_.push_back({offset, std::move(bytes)});
    return true;
  }

  void takeDirectory(std::int64_t offset) {
    const Bytes head = input_.at(offset, 2);
    ByteReader counter(head);
    const auto count = number(counter, 2);
    if (head.empty() || count > kMostEntries) return;
    const std::size_t size = 2 + count * kEntrySize;
    Bytes bytes = input_.at(offset, size + 4);
    // The last directory of a file may lack the offset of the next.
    if (bytes.empty()) bytes = input_.at(offset, size);
    if (bytes.empty() || offset > kLargestFile) return;
    for (std::size_t i = 0; i < count; ++i)
      takeEntry(std::span(bytes).subspan(2 + i * kEntrySize, kEntrySize));
    ByteReader next(std::span<const std::uint8_t>(bytes).subspan(size));
    waiting_.push_back(static_cast<std::int64_t>(number(next, 4)));
    directories_.insert(offset);
    pieces_.push_back({offset, std::move(bytes)});
  }

  // Copies its value. A long one is cut, in the directory, too.
  void takeEntry(std::span<std::uint8_t> entry) {
    ByteReader reader(entry);
    const auto tag = static_cast<unsigned>(number(reader, 2));
    const std::size_t unit = sizeOfType(static_cast<unsigned>(number(reader, 2)));
    const auto count = number(reader, 4);
    if (unit == 0) return;
    const auto size = unit * count;
    const auto most = mostOf(tag) / unit * unit;
    const auto taken = std::min<std::uint64_t>(size, most);
    constexpr std::size_t kCount = 4;
    constexpr std::size_t kValue = 8;
    if (taken < size) putNumber(entry.subspan(kCount, 4), taken / unit);
    Bytes value;
    if (size <= 4) {
      value.assign(entry.begin() + kValue, entry.end());
    } else {
      const auto offset = static_cast<std::int64_t>(number(reader, 4));
      // A value that is not there must not be taken for zeros between others.
      if (!copy(offset, taken))
        putNumber(entry.subspan(kCount, 4), 0);
      else if (isDirectoryTag(tag) || tag == kXmpTag)
        value = pieces_.back().bytes;
    }
    if (tag == kXmpTag) {
      // Exiv2 would parse it whatever it looks like.
      putNumber(entry.subspan(kCount, 4), 0);
      if (xmp_.empty()) xmp_ = textOf(value);
    }
    if (isDirectoryTag(tag)) takeOffsets(value, unit, size / unit);
  }

  static bool isDirectoryTag(unsigned tag) {
    return std::ranges::find(kDirectoryTags, tag) != std::end(kDirectoryTags);
  }

  void takeOffsets(std::span<const std::uint8_t> value, std::size_t unit, std::uint64_t count) {
    ByteReader reader(value);
    for (std::uint64_t i = 0; i < std::min<std::uint64_t>(count, kMostDirectories); ++i) {
      const auto offset = number(reader, std::min<std::size_t>(unit, 4));
      if (!reader.failed()) waiting_.push_back(static_cast<std::int64_t>(offset));
    }
  }

  const Input& input_;
  const bool isBigEndian_;
  std::vector<std::int64_t> waiting_;
  std::set<std::int64_t> seen_;
  std::set<std::int64_t> directories_;
  std::vector<Piece> pieces_;
  std::uint64_t copied_ = 0;
  std::string xmp_;
};

TiffKind kindOf(std::string_view head) {
  if (head.starts_with("IIU")) return TiffKind::kPanasonic;
  const bool isPlain = head.starts_with("II*"sv) || head.starts_with("MM\0*"sv);
  return isPlain ? TiffKind::kPlain : TiffKind::kOlympus;
}

void takeTiff(const Input& input, Blocks& blocks) {
  const Bytes head = input.at(0, kHeaderSize);
  if (head.empty()) return;
  const bool isBigEndian = head[0] == 'M';
  ByteReader reader(head);
  reader.skip(4);
  const auto first = isBigEndian ? reader.bigEndian(4) : reader.littleEndian(4);
  blocks.tiffKind = kindOf(textOf(head));
  Collector collector(input, isBigEndian);
  collector.run(static_cast<std::int64_t>(first));
  blocks.tiff = collector.memory();
  if (blocks.xmp.empty()) blocks.xmp = collector.takeXmp();
}

}  // namespace

void findInTiff(const media::Source& source, Blocks& blocks) {
  takeTiff(Input(source), blocks);
  blocks.isTiff = true;
}

void takeExif(std::span<const std::uint8_t> bytes, Blocks& blocks) {
  constexpr std::string_view kHeader = "Exif\0\0"sv;
  if (textOf(bytes).starts_with(kHeader)) bytes = bytes.subspan(kHeader.size());
  if (blocks.tiff.bytes().empty()) takeTiff(Input(bytes), blocks);
}

namespace {

// --- Canon's CR3: four little-endian TIFF structures, each with a directory of its own

void putLittleEndian(Bytes& bytes, std::uint64_t value, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

struct DirectoryEntry {
  unsigned tag = 0;
  unsigned type = 0;
  std::uint32_t count = 0;
  std::uint32_t value = 0;  // or its offset
};

// The directory of a structure that begins at BASE of a larger one.
std::vector<DirectoryEntry> entriesAt(std::span<const std::uint8_t> tiff, std::size_t base) {
  std::vector<DirectoryEntry> entries;
  if (tiff.size() < kHeaderSize || !textOf(tiff).starts_with("II*"sv)) return entries;
  ByteReader reader(tiff);
  reader.skip(4);
  const auto first = reader.littleEndian(4);
  if (first < kHeaderSize) return entries;
  reader.skip(first - kHeaderSize);
  const auto count = std::min<std::uint64_t>(reader.littleEndian(2), kMostEntries);
  for (std::uint64_t i = 0; i < count; ++i) {
    DirectoryEntry entry = {.tag = static_cast<unsigned>(reader.littleEndian(2)),
                            .type = static_cast<unsigned>(reader.littleEndian(2)),
                            .count = static_cast<std::uint32_t>(reader.littleEndian(4)),
                            .value = static_cast<std::uint32_t>(reader.littleEndian(4))};
    const std::uint64_t size = std::uint64_t{entry.count} * sizeOfType(entry.type);
    if (size > 4) entry.value += static_cast<std::uint32_t>(base);
    if (!reader.failed()) entries.push_back(entry);
  }
  return entries;
}

// Returns where the directory begins.
std::uint32_t putDirectory(Bytes& bytes, const std::vector<DirectoryEntry>& entries) {
  if (bytes.size() % 2 != 0) bytes.push_back(0);
  const auto begin = static_cast<std::uint32_t>(bytes.size());
  putLittleEndian(bytes, entries.size(), 2);
  for (const DirectoryEntry& entry : entries) {
    putLittleEndian(bytes, entry.tag, 2);
    putLittleEndian(bytes, entry.type, 2);
    putLittleEndian(bytes, entry.count, 4);
    putLittleEndian(bytes, entry.value, 4);
  }
  putLittleEndian(bytes, 0, 4);
  return begin;
}

// Puts the structure of a box behind BYTES and returns its directory as it is there.
std::vector<DirectoryEntry> append(const media::Source& source, FileRange boxes,
                                   std::string_view type, Bytes& bytes) {
  if (bytes.size() % 2 != 0) bytes.push_back(0);
  const Bytes tiff = contentOfBox(source, boxes, type);
  const std::size_t base = bytes.size();
  bytes.insert(bytes.end(), tiff.begin(), tiff.end());
  return entriesAt(tiff, base);
}

constexpr unsigned kLong = 4;
constexpr unsigned kUndefined = 7;

// The four structures as one, as it is in other files of the same maker.
Bytes joined(const media::Source& source, FileRange boxes) {
  Bytes bytes;
  for (const char c : "II*\0"sv) bytes.push_back(static_cast<std::uint8_t>(c));
  putLittleEndian(bytes, 0, 4);
  auto main = append(source, boxes, "CMT1", bytes);
  auto exif = append(source, boxes, "CMT2", bytes);
  const auto notes = append(source, boxes, "CMT3", bytes);
  const auto gps = append(source, boxes, "CMT4", bytes);
  if (!notes.empty()) {
    const std::uint32_t begin = putDirectory(bytes, notes);
    const auto size = static_cast<std::uint32_t>(bytes.size()) - begin;
    exif.push_back({.tag = 0x927C, .type = kUndefined, .count = size, .value = begin});
  }
  if (!exif.empty())
    main.push_back({.tag = 0x8769, .type = kLong, .count = 1, .value = putDirectory(bytes, exif)});
  if (!gps.empty())
    main.push_back({.tag = 0x8825, .type = kLong, .count = 1, .value = putDirectory(bytes, gps)});
  const std::uint32_t first = putDirectory(bytes, main);
  for (std::size_t i = 0; i < 4; ++i) bytes[4 + i] = static_cast<std::uint8_t>(first >> 8 * i);
  return bytes;
}

}  // namespace

void findInCanonRaw3(const media::Source& source, Blocks& blocks) {
  constexpr std::string_view kCanon =
      "\x85\xC0\xB6\x87\x82\x0F\x11\xE0\x81\x11\xF4\xCE\x46\x2B\x6A\x48"sv;
  constexpr std::string_view kXmp =
      "\xBE\x7A\xCF\xCB\x97\xA9\x42\xE8\x9C\x71\x99\x94\x91\xE3\xAF\xAC"sv;
  const FileRange whole = {.begin = 0, .end = source.size()};
  blocks.xmp = textOf(contentOf(source, findBoxWith(source, whole, "uuid", kXmp)));
  const auto movie = findBox(source, whole, "moov");
  const auto tags = movie ? findBoxWith(source, *movie, "uuid", kCanon) : std::nullopt;
  if (tags) takeExif(joined(source, *tags), blocks);
}

}  // namespace kolum::exif
