#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "base/bytes.h"
#include "read/tags/song_formats.h"

namespace kolum::tags {

namespace {

using namespace std::string_view_literals;

// The boxes of a song's list and the names for SongTagBuilder.
struct ItemRow {
  std::string_view type;
  std::string_view name;
};

constexpr auto kItems = std::to_array<ItemRow>({
    {"\251nam", "TITLE"},     {"\251alb", "ALBUM"},        {"\251ART", "ARTIST"},
    {"aART", "ALBUMARTIST"},  {"\251wrt", "COMPOSER"},     {"\251con", "CONDUCTOR"},
    {"\251nrt", "NARRATOR"},  {"\251dir", "DIRECTOR"},     {"\251prd", "PRODUCER"},
    {"\251arg", "ARRANGER"},  {"\251gen", "GENRE"},        {"\251day", "DATE"},
    {"\251cmt", "COMMENT"},   {"desc", "COMMENT"},         {"\251lyr", "LYRICS"},
    {"\251too", "ENCODER"},   {"\251enc", "ENCODEDBY"},    {"cprt", "COPYRIGHT"},
    {"\251cpy", "COPYRIGHT"}, {"\251pub", "LABEL"},        {"tmpo", "BPM"},
    {"cpil", "COMPILATION"},  {"pgap", "ITUNESGAPLESS"},   {"pcst", "PODCAST"},
    {"rate", "RATING"},       {"sonm", "TITLESORT"},       {"soal", "ALBUMSORT"},
    {"soar", "ARTISTSORT"},   {"soaa", "ALBUMARTISTSORT"}, {"soco", "COMPOSERSORT"},
});

struct Box {
  std::string type;
  Range content;
  std::int64_t end = 0;
};

std::optional<Box> boxAt(TagFile& file, const Range& range, std::int64_t position) {
  constexpr std::size_t kHeader = 8;
  constexpr std::size_t kLargeHeader = 16;
  const auto header = file.read(range.part(position, kLargeHeader), kLargeHeader);
  ByteReader reader(header);
  std::uint64_t size = reader.bigEndian(4);
  Box box;
  box.type = reader.text(4);
  if (reader.failed()) return std::nullopt;
  std::size_t headerSize = kHeader;
  if (size == 1) {
    size = reader.bigEndian(8);
    headerSize = kLargeHeader;
  } else if (size == 0) {  // up to the end
    size = static_cast<std::uint64_t>(range.end - position);
  }
  if (reader.failed() || size < headerSize) return std::nullopt;
  box.content = range.part(position + static_cast<std::int64_t>(headerSize), size - headerSize);
  box.end = box.content.end;
  return box;
}

// Calls USE for each box in a range until it returns false.
template <typename Use>
void forEachBox(TagFile& file, const Range& range, int most, Use use) {
  std::int64_t position = range.begin;
  for (int i = 0; i < most && position < range.end; ++i) {
    const auto box = boxAt(file, range, position);
    if (!box || !use(*box)) return;
    position = box->end;
  }
}

std::optional<Range> find(TagFile& file, const Range& range, std::string_view type) {
  std::optional<Range> found;
  forEachBox(file, range, kMostEntries, [&](const Box& box) {
    if (box.type == type) found = box.content;
    return !found;
  });
  return found;
}

// A value: what type it has, and which language.
struct Data {
  std::uint32_t type = 0;
  Range content;
};

constexpr std::uint64_t kDataHeader = 8;

std::optional<Data> dataOf(TagFile& file, const Box& box) {
  if (box.type != "data") return std::nullopt;
  const auto header = file.read(box.content, kDataHeader);
  if (header.size() < kDataHeader) return std::nullopt;
  ByteReader reader(header);
  Data data;
  data.type = static_cast<std::uint32_t>(reader.bigEndian(4));
  data.content = box.content.part(box.content.begin + static_cast<std::int64_t>(kDataHeader),
                                  static_cast<std::uint64_t>(box.content.size()));
  return data;
}

enum DataType : std::uint32_t { kUndefined = 0, kText = 1, kInteger = 21 };

// An integer in decimal digits, or a text.
std::string textOf(TagFile& file, const Data& data) {
  const auto bytes = file.read(data.content, kLongestEntry);
  constexpr std::size_t kLongestInteger = 8;
  if (data.type == kText || bytes.size() > kLongestInteger) return utf8Of(kolum::textOf(bytes));
  return std::to_string(ByteReader(bytes).bigEndian(bytes.size()));
}

// Calls USE for each value of a box.
template <typename Use>
void forEachData(TagFile& file, const Range& item, Use use) {
  forEachBox(file, item, static_cast<int>(media::kMostTagValues), [&](const Box& box) {
    if (const auto data = dataOf(file, box)) use(*data);
    return true;
  });
}

// Two zeros, a number, how many there are.
void addPosition(TagFile& file, const Range& item, std::string_view number, std::string_view total,
                 SongTagBuilder& builder) {
  forEachData(file, item, [&](const Data& data) {
    const auto bytes = file.read(data.content, kDataHeader);
    ByteReader reader(bytes);
    reader.skip(2);
    const std::uint64_t value = reader.bigEndian(2);
    const std::uint64_t count = reader.bigEndian(2);
    builder.add(number, std::to_string(value));
    builder.add(total, std::to_string(count));
  });
}

// A number of ID3v1, plus one.
void addGenre(TagFile& file, const Range& item, SongTagBuilder& builder) {
  forEachData(file, item, [&](const Data& data) {
    const auto bytes = file.read(data.content, 2);
    const std::uint64_t number = ByteReader(bytes).bigEndian(bytes.size());
    if (number > 0) builder.add("GENRE", std::to_string(number - 1));
  });
}

void addCovers(TagFile& file, const Range& item, SongTagBuilder& builder) {
  constexpr std::uint32_t kJpeg = 13;
  constexpr std::uint32_t kPng = 14;
  constexpr std::uint32_t kBmp = 27;
  forEachData(file, item, [&](const Data& data) {
    const std::string_view mimeType = data.type == kJpeg  ? "image/jpeg"
                                      : data.type == kPng ? "image/png"
                                      : data.type == kBmp ? "image/bmp"
                                                          : "";
    builder.addCover(mimeType, "", "", file.read(data.content, kCoverHead),
                     static_cast<std::uint64_t>(data.content.size()));
  });
}

// A program's domain, a name, and values. The domain makes no difference.
void addFree(TagFile& file, const Range& item, SongTagBuilder& builder) {
  constexpr std::int64_t kVersion = 4;
  constexpr std::size_t kLongestName = 256;
  std::string name;
  forEachBox(file, item, static_cast<int>(media::kMostTagValues), [&](const Box& box) {
    if (box.type == "name") {
      const auto bytes = file.read(box.content, kLongestName);
      name = kolum::textOf(Bytes(bytes).subspan(std::min<std::size_t>(bytes.size(), kVersion)));
    } else if (const auto data = dataOf(file, box)) {
      builder.add(name, utf8Of(kolum::textOf(file.read(data->content, kLongestEntry))));
    }
    return true;
  });
}

void addItem(TagFile& file, const Box& item, SongTagBuilder& builder) {
  if (item.type == "trkn")
    return addPosition(file, item.content, "TRACKNUMBER", "TRACKTOTAL", builder);
  if (item.type == "disk")
    return addPosition(file, item.content, "DISCNUMBER", "DISCTOTAL", builder);
  if (item.type == "gnre") return addGenre(file, item.content, builder);
  if (item.type == "covr") return addCovers(file, item.content, builder);
  if (item.type == "----") return addFree(file, item.content, builder);
  const auto row = std::ranges::find(kItems, item.type, &ItemRow::type);
  if (row == kItems.end()) return;
  forEachData(file, item.content,
              [&](const Data& data) { builder.add(row->name, textOf(file, data)); });
}

// Version and flags, except in QuickTime: there the boxes follow at once.
Range boxesOfMeta(TagFile& file, const Range& meta) {
  const auto bytes = file.read(meta, 8);
  const bool isPlain =
      kolum::textOf(bytes).substr(std::min<std::size_t>(bytes.size(), 4)) == "hdlr";
  return isPlain ? meta : meta.part(meta.begin + 4, static_cast<std::uint64_t>(meta.size()));
}

}  // namespace

void addMp4(TagFile& file, SongTagBuilder& builder) {
  const Range whole = {.begin = 0, .end = file.size()};
  const auto movie = find(file, whole, "moov");
  const auto user = movie ? find(file, *movie, "udta") : std::nullopt;
  const auto meta = user ? find(file, *user, "meta") : std::nullopt;
  const auto list = meta ? find(file, boxesOfMeta(file, *meta), "ilst") : std::nullopt;
  if (!list) return;
  builder.beginTag();
  forEachBox(file, *list, kMostEntries, [&](const Box& item) {
    addItem(file, item, builder);
    return true;
  });
}

}  // namespace kolum::tags
