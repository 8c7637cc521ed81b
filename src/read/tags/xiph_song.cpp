#include <tbytevector.h>

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <string>

#include "base/bytes.h"
#include "base/text.h"
#include "read/tags/song_formats.h"

namespace kolum::tags {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kPictureComment = "METADATA_BLOCK_PICTURE=";
constexpr std::string_view kOldPictureComment = "COVERART=";

// The first bytes that TEXT encodes.
std::vector<std::uint8_t> base64(std::string_view text, std::size_t most) {
  // Four letters for three bytes.
  text = text.substr(0, most / 3 * 4);
  const auto bytes =
      TagLib::ByteVector::fromBase64({text.data(), static_cast<unsigned>(text.size())});
  return {bytes.begin(), bytes.end()};
}

void addComment(std::string_view comment, std::uint64_t size, SongTagBuilder& builder) {
  constexpr std::size_t kDescriptionAndHead = kCoverHead + 4096;
  if (startsWithIgnoringCase(comment, kPictureComment) && comment.size() > kPictureComment.size()) {
    addFlacPicture(TagBytes(base64(comment.substr(kPictureComment.size()), kDescriptionAndHead)),
                   builder);
  } else if (startsWithIgnoringCase(comment, kOldPictureComment) &&
             comment.size() > kOldPictureComment.size()) {
    const auto head = base64(comment.substr(kOldPictureComment.size()), kCoverHead);
    const std::size_t padding = comment.ends_with("==") ? 2 : comment.ends_with('=') ? 1 : 0;
    builder.addCover("", "", "", head, (size - kOldPictureComment.size()) / 4 * 3 - padding);
  } else if (const std::size_t name = comment.find('='); name != comment.npos) {
    builder.add(comment.substr(0, name), utf8Of(comment.substr(name + 1)));
  }
}

// --- Ogg

struct Page {
  std::uint32_t serial = 0;
  bool isFirst = false;  // of its stream
  std::vector<std::uint8_t> laces;
  Range data;
  std::int64_t end = 0;
};

std::optional<Page> pageAt(TagFile& file, std::int64_t position) {
  constexpr std::size_t kHeader = 27;
  constexpr std::size_t kMostLaces = 255;
  constexpr unsigned kFirst = 2;
  const Range whole = {.begin = 0, .end = file.size()};
  const auto bytes = file.read(whole.part(position, kHeader + kMostLaces), kHeader + kMostLaces);
  ByteReader reader(bytes);
  if (reader.text(5) != "OggS\0"sv) return std::nullopt;
  Page page;
  page.isFirst = (reader.bigEndian(1) & kFirst) != 0;
  reader.skip(8);
  page.serial = static_cast<std::uint32_t>(reader.littleEndian(4));
  reader.skip(8);
  const auto laces = reader.take(reader.bigEndian(1));
  if (reader.failed()) return std::nullopt;
  page.laces.assign(laces.begin(), laces.end());
  std::uint64_t size = 0;
  for (const std::uint8_t lace : laces) size += lace;
  page.data = whole.part(position + static_cast<std::int64_t>(kHeader + laces.size()), size);
  page.end = page.data.end;
  return page;
}

// The packets of a stream, one after the other.
class Packets {
 public:
  Packets(TagFile& file, std::uint32_t serial) : file_(file), serial_(serial) {}

  // The next packet; empty at the end, and if the packet is too long.
  std::optional<std::vector<std::uint8_t>> next();

 private:
  bool nextPage();

  // A cover of 5 MB takes a hundred pages or more.
  static constexpr int kMostPages = 16384;
  TagFile& file_;
  std::uint32_t serial_;
  std::int64_t position_ = 0;
  int pages_ = 0;
  Page page_;
  std::size_t lace_ = 0;
  std::vector<std::uint8_t> data_;
  std::size_t used_ = 0;  // of the data
};

bool Packets::nextPage() {
  while (++pages_ <= kMostPages) {
    auto page = pageAt(file_, position_);
    if (!page) return false;
    position_ = page->end;
    if (page->serial != serial_) continue;
    page_ = std::move(*page);
    lace_ = 0;
    data_ = file_.read(page_.data, kLargestPiece);
    used_ = 0;
    return data_.size() == static_cast<std::size_t>(page_.data.size());
  }
  return false;
}

std::optional<std::vector<std::uint8_t>> Packets::next() {
  constexpr std::uint8_t kGoesOn = 255;
  std::vector<std::uint8_t> packet;
  for (;;) {
    if (lace_ >= page_.laces.size()) {
      if (!nextPage()) return std::nullopt;
      continue;
    }
    const std::size_t size = std::min<std::size_t>(page_.laces[lace_], data_.size() - used_);
    if (packet.size() + size > kLargestPiece) return std::nullopt;
    const auto begin = data_.begin() + static_cast<std::ptrdiff_t>(used_);
    packet.insert(packet.end(), begin, begin + static_cast<std::ptrdiff_t>(size));
    used_ += size;
    if (page_.laces[lace_++] != kGoesOn) return packet;
  }
}

// The beginnings of a stream's first packet and of the packet of its comments.
struct Codec {
  std::string_view identification;
  std::string_view comments;
};

constexpr auto kCodecs = std::to_array<Codec>({
    {"\x01vorbis", "\x03vorbis"},
    {"OpusHead", "OpusTags"},
    {"Speex   ", ""},
    {"\x80theora", "\x81theora"},
});

constexpr std::string_view kOggFlac =
    "\x7F"
    "FLAC";

constexpr int kCommentBlock = 4;
constexpr int kPictureBlock = 6;
constexpr std::size_t kBlockHeader = 4;
constexpr unsigned kLastBlock = 0x80;

void addBlock(int type, TagBytes content, SongTagBuilder& builder) {
  if (type == kCommentBlock) addVorbisComments(std::move(content), builder);
  if (type == kPictureBlock) addFlacPicture(std::move(content), builder);
}

// Every packet behind the first is a block.
void addOggFlac(Packets& packets, SongTagBuilder& builder) {
  constexpr int kMostBlocks = 1024;
  for (int i = 0; i < kMostBlocks; ++i) {
    auto packet = packets.next();
    if (!packet || packet->size() < kBlockHeader) return;
    const unsigned first = packet->front();
    packet->erase(packet->begin(), packet->begin() + kBlockHeader);
    addBlock(static_cast<int>(first & ~kLastBlock), TagBytes(std::move(*packet)), builder);
    if ((first & kLastBlock) != 0) return;
  }
}

}  // namespace

void addVorbisComments(TagBytes bytes, SongTagBuilder& builder) {
  const auto number = [&](std::int64_t position) {
    const auto field = bytes.at(position, 4);
    return static_cast<std::int64_t>(ByteReader(field).littleEndian(4));
  };
  const std::int64_t vendorSize = number(0);
  const auto vendor =
      bytes.at(4, std::min<std::uint64_t>(static_cast<std::uint64_t>(vendorSize), kLongestEntry));
  std::int64_t position = 4 + vendorSize;
  const std::int64_t count = std::min<std::int64_t>(number(position), kMostEntries);
  position += 4;
  for (std::int64_t i = 0; i < count && position + 4 <= bytes.size(); ++i) {
    const std::int64_t size = number(position);
    position += 4;
    if (size > bytes.size() - position) break;
    const auto comment = bytes.at(
        position, std::min<std::uint64_t>(static_cast<std::uint64_t>(size), kLongestEntry));
    addComment(textOf(comment), static_cast<std::uint64_t>(size), builder);
    position += size;
  }
  builder.add("ENCODER", utf8Of(textOf(vendor)));
}

void addFlacPicture(TagBytes bytes, SongTagBuilder& builder) {
  constexpr std::uint64_t kLongestMimeType = 256;
  constexpr std::int64_t kMeasures = 16;  // size, colours
  std::int64_t position = 0;
  const auto number = [&] {
    const auto field = bytes.at(position, 4);
    position += 4;
    return ByteReader(field).bigEndian(4);
  };
  const auto text = [&](std::uint64_t most) {
    const std::uint64_t size = number();
    const auto content = bytes.at(position, std::min(size, most));
    position += static_cast<std::int64_t>(size);
    return utf8Of(textOf(content));
  };
  const auto type = static_cast<std::uint32_t>(number());
  const std::string mimeType = text(kLongestMimeType);
  const std::string description = text(kLongestEntry);
  position += kMeasures;
  const std::uint64_t size = number();
  if (position > bytes.size()) return;
  builder.addCover(mimeType, media::coverTypeName(type), description,
                   bytes.at(position, std::min<std::uint64_t>(size, kCoverHead)), size);
}

void addFlac(TagFile& file, std::int64_t begin, SongTagBuilder& builder) {
  constexpr std::string_view kMagic = "fLaC";
  const Range whole = {.begin = 0, .end = file.size()};
  if (textOf(file.read(whole.part(begin, kMagic.size()), kMagic.size())) != kMagic) return;
  builder.beginTag();
  std::int64_t position = begin + static_cast<std::int64_t>(kMagic.size());
  for (int i = 0; i < kMostEntries; ++i) {
    const auto header = file.read(whole.part(position, kBlockHeader), kBlockHeader);
    ByteReader reader(header);
    const auto first = static_cast<unsigned>(reader.bigEndian(1));
    const std::uint64_t size = reader.bigEndian(3);
    if (reader.failed()) return;
    position += static_cast<std::int64_t>(kBlockHeader);
    addBlock(static_cast<int>(first & ~kLastBlock), TagBytes(file, whole.part(position, size)),
             builder);
    if ((first & kLastBlock) != 0) return;
    position += static_cast<std::int64_t>(size);
  }
}

void addOgg(TagFile& file, SongTagBuilder& builder) {
  constexpr int kMostStreams = 64;
  builder.beginTag();
  std::int64_t position = 0;
  for (int i = 0; i < kMostStreams; ++i) {
    const auto page = pageAt(file, position);
    if (!page || !page->isFirst) return;
    position = page->end;
    const auto first = file.read(page->data, 16);
    Packets packets(file, page->serial);
    if (textOf(first).starts_with(kOggFlac)) {
      packets.next();
      return addOggFlac(packets, builder);
    }
    const auto codec = std::ranges::find_if(
        kCodecs, [&](const Codec& row) { return textOf(first).starts_with(row.identification); });
    if (codec == kCodecs.end()) continue;
    packets.next();
    auto packet = packets.next();
    if (!packet || !textOf(*packet).starts_with(codec->comments)) return;
    packet->erase(packet->begin(),
                  packet->begin() + static_cast<std::ptrdiff_t>(codec->comments.size()));
    return addVorbisComments(TagBytes(std::move(*packet)), builder);
  }
}

}  // namespace kolum::tags
