#include <algorithm>
#include <array>
#include <string>

#include "base/bytes.h"
#include "read/tags/song_formats.h"

namespace kolum::tags {

namespace {

constexpr std::int64_t kId3v1Size = 128;
constexpr std::int64_t kFooterSize = 32;
constexpr std::string_view kPreamble = "APETAGEX";

// "Cover Art (Front)"
constexpr std::string_view kCoverPrefix = "cover art (";

std::string_view coverTypeOf(std::string_view key) {
  struct Row {
    std::string_view name;
    std::uint32_t type;
  };
  // The names of common writers; the order of ID3v2's types.
  static constexpr auto kRows = std::to_array<Row>({
      {"other", 0},
      {"icon", 1},
      {"other icon", 2},
      {"front", 3},
      {"back", 4},
      {"leaflet", 5},
      {"media", 6},
      {"lead artist", 7},
      {"artist", 8},
      {"conductor", 9},
      {"band", 10},
      {"composer", 11},
      {"lyricist", 12},
      {"recording location", 13},
      {"during recording", 14},
      {"during performance", 15},
      {"video capture", 16},
      {"fish", 17},
      {"illustration", 18},
      {"band logotype", 19},
      {"publisher logotype", 20},
  });
  const std::string_view name =
      key.substr(kCoverPrefix.size(), key.find(')') - kCoverPrefix.size());
  const auto row = std::ranges::find(kRows, name, &Row::name);
  return row != kRows.end() ? media::coverTypeName(row->type) : "";
}

// A file name, a NUL, and the picture.
void addCover(std::string_view key, Bytes head, std::uint64_t size, SongTagBuilder& builder) {
  const std::string_view text = textOf(head);
  const std::size_t name = text.find('\0');
  if (name == text.npos) return;
  const Bytes picture = head.subspan(name + 1);
  builder.addCover("", coverTypeOf(key), utf8Of(text.substr(0, name)),
                   picture.first(std::min(picture.size(), kCoverHead)), size - (name + 1));
}

std::string lowered(std::string_view text) {
  std::string lower(text);
  for (char& c : lower)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return lower;
}

void addApeItems(TagBytes items, SongTagBuilder& builder) {
  constexpr std::uint64_t kLongestKey = 256;
  constexpr std::uint64_t kNumbers = 8;
  constexpr unsigned kBinary = 2;  // bits 1 and 2; 0 is text
  std::int64_t position = 0;
  for (int i = 0; i < kMostEntries; ++i) {
    const auto header = items.at(position, kNumbers + kLongestKey);
    ByteReader reader(header);
    const std::uint64_t size = reader.littleEndian(4);
    const auto flags = static_cast<unsigned>(reader.littleEndian(4));
    const std::string_view rest = reader.text(reader.left());
    const std::size_t end = rest.find('\0');
    if (reader.failed() || end == rest.npos) return;
    const std::string key = lowered(rest.substr(0, end));
    position += static_cast<std::int64_t>(kNumbers + end + 1);
    if (position + static_cast<std::int64_t>(size) > items.size()) return;
    const bool isBinary = (flags & 6) == kBinary;
    if (isBinary && key.starts_with(kCoverPrefix))
      addCover(key, items.at(position, std::min<std::uint64_t>(size, kCoverHead + kLongestKey)),
               size, builder);
    else if (!isBinary)
      builder.add(key,
                  utf8Of(textOf(items.at(position, std::min<std::uint64_t>(size, kLongestEntry)))));
    position += static_cast<std::int64_t>(size);
  }
}

// FOOTER: the position of the tag's end mark.
void addApe(TagFile& file, std::int64_t footer, Bytes bytes, SongTagBuilder& builder) {
  ByteReader reader(bytes);
  if (reader.text(kPreamble.size()) != kPreamble) return;
  reader.skip(4);
  // With the footer, without a header.
  const auto size = static_cast<std::int64_t>(reader.littleEndian(4));
  if (reader.failed() || size < kFooterSize || size - kFooterSize > footer) return;
  builder.beginTag();
  addApeItems(TagBytes(file, {.begin = footer + kFooterSize - size, .end = footer}), builder);
}

// Padded with zeros or spaces.
std::string padded(std::string_view field) {
  field = field.substr(0, field.find('\0'));
  field = field.substr(0, field.find_last_not_of(' ') + 1);
  return utf8Of(field);
}

void addId3v1(Bytes bytes, SongTagBuilder& builder) {
  constexpr std::size_t kText = 30;
  constexpr std::size_t kYear = 4;
  constexpr std::size_t kTrackMark = 28;
  builder.beginTag();
  ByteReader reader(bytes);
  reader.skip(3);
  builder.add("TITLE", padded(reader.text(kText)));
  builder.add("ARTIST", padded(reader.text(kText)));
  builder.add("ALBUM", padded(reader.text(kText)));
  builder.add("DATE", padded(reader.text(kYear)));
  const std::string_view comment = reader.text(kText);
  builder.add("COMMENT", padded(comment));
  // In version 1.1, the last character of the comment is the track.
  if (comment[kTrackMark] == 0 && comment[kTrackMark + 1] != 0)
    builder.add("TRACKNUMBER", std::to_string(static_cast<unsigned char>(comment[kTrackMark + 1])));
  builder.add("GENRE", std::to_string(reader.bigEndian(1)));
}

}  // namespace

void addTrailingTags(TagFile& file, SongTagBuilder& builder) {
  const Range whole = {.begin = 0, .end = file.size()};
  const auto last = file.read(whole.part(file.size() - kId3v1Size, kId3v1Size), kId3v1Size);
  const bool hasId3v1 =
      last.size() == static_cast<std::size_t>(kId3v1Size) && textOf(last).starts_with("TAG");
  const std::int64_t footer = file.size() - kFooterSize - (hasId3v1 ? kId3v1Size : 0);
  if (footer >= 0)
    addApe(file, footer, file.read(whole.part(footer, kFooterSize), kFooterSize), builder);
  if (hasId3v1) addId3v1(last, builder);
}

}  // namespace kolum::tags
