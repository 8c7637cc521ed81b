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

constexpr std::size_t kDescriptionAndHead = kCoverHead + 4096;

// What is read of a comment: of a picture no more than its beginning.
std::size_t neededSize(std::string_view beginning) {
  const bool isPicture = startsWithIgnoringCase(beginning, kPictureComment) ||
                         startsWithIgnoringCase(beginning, kOldPictureComment);
  return isPicture ? kPictureComment.size() + kDescriptionAndHead / 3 * 4 : kLongestEntry;
}

void addOldPicture(std::string_view text, std::uint64_t size, std::string_view end,
                   SongTagBuilder& builder) {
  const std::size_t padding = end.ends_with("==") ? 2 : end.ends_with('=') ? 1 : 0;
  builder.addCover("", "", "", base64(text, kCoverHead), size / 4 * 3 - padding);
}

// SIZE bytes at POSITION.
void addComment(TagBytes& bytes, std::int64_t position, std::uint64_t size,
                SongTagBuilder& builder) {
  const auto beginning = bytes.at(position, std::min<std::uint64_t>(size, kPictureComment.size()));
  const auto content =
      bytes.at(position, std::min<std::uint64_t>(size, neededSize(textOf(beginning))));
  const std::string_view comment = textOf(content);
  const std::size_t name = comment.find('=');
  if (name == comment.npos) return;
  const std::string_view value = comment.substr(name + 1);
  if (comment.size() > kPictureComment.size() && startsWithIgnoringCase(comment, kPictureComment)) {
    addFlacPicture(TagBytes(base64(value, kDescriptionAndHead)), builder);
  } else if (value.size() > 2 && startsWithIgnoringCase(comment, kOldPictureComment)) {
    constexpr std::uint64_t kPadding = 2;
    const auto end = bytes.at(position + static_cast<std::int64_t>(size - kPadding), kPadding);
    addOldPicture(value, size - name - 1, textOf(end), builder);
  } else {
    builder.add(comment.substr(0, name), utf8Of(value));
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
  std::optional<TagBytes> next();

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
};

bool Packets::nextPage() {
  while (++pages_ <= kMostPages) {
    auto page = pageAt(file_, position_);
    if (!page) return false;
    position_ = page->end;
    if (page->serial != serial_) continue;
    page_ = std::move(*page);
    lace_ = 0;
    return true;
  }
  return false;
}

std::optional<TagBytes> Packets::next() {
  constexpr std::uint8_t kGoesOn = 255;
  std::vector<Range> parts;
  std::int64_t size = 0;
  for (bool isEnded = false; !isEnded;) {
    if (lace_ >= page_.laces.size() && !nextPage()) return std::nullopt;
    Range part = {.begin = page_.data.begin, .end = page_.data.begin};
    while (lace_ < page_.laces.size() && !isEnded) {
      const std::uint8_t lace = page_.laces[lace_++];
      part.end = std::min(part.end + lace, page_.data.end);
      isEnded = lace != kGoesOn;
    }
    page_.data.begin = part.end;
    size += part.size();
    if (size > static_cast<std::int64_t>(kLargestPiece)) return std::nullopt;
    parts.push_back(part);
  }
  return TagBytes(file_, std::move(parts));
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
  if (type == kCommentBlock)
    addVorbisComments(std::move(content), builder);
  else if (type == kPictureBlock)
    addFlacPicture(std::move(content), builder);
}

// Every packet behind the first is a block.
void addOggFlac(Packets& packets, SongTagBuilder& builder) {
  constexpr int kMostBlocks = 1024;
  for (int i = 0; i < kMostBlocks; ++i) {
    auto packet = packets.next();
    const auto header = packet ? packet->at(0, kBlockHeader) : std::vector<std::uint8_t>();
    if (header.size() < kBlockHeader) return;
    const unsigned first = header.front();
    packet->skip(kBlockHeader);
    addBlock(static_cast<int>(first & ~kLastBlock), std::move(*packet), builder);
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
    addComment(bytes, position, static_cast<std::uint64_t>(size), builder);
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
    if (!packet || textOf(packet->at(0, codec->comments.size())) != codec->comments) return;
    packet->skip(codec->comments.size());
    return addVorbisComments(std::move(*packet), builder);
  }
}

}  // namespace kolum::tags
