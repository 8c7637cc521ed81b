// Playlists of Blu-ray discs (MPLS).
#include <algorithm>
#include <cctype>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/bytes.h"
#include "base/clean_text.h"
#include "read/headers/disc_index.h"

namespace kolum::headers {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr double kTicksPerSecond = 45000;
// The format has room for 999.
constexpr std::uint64_t kMostItems = 1000;

// A part of a stream that is played.
struct Item {
  std::string stream;
  std::uint32_t begin = 0;  // in ticks, on the stream's clock
  std::uint32_t end = 0;
  int angles = 1;
  Bytes streams;  // their table

  double duration() const { return end > begin ? (end - begin) / kTicksPerSecond : 0; }
};

// The angles of ITEM after the first, which is the item itself.
int readAngles(ByteReader& item) {
  constexpr std::size_t kAngleSize = 10;
  const auto count = static_cast<int>(item.bigEndian(1));
  item.skip(1);
  for (int i = 1; i < count && !item.failed(); ++i) item.skip(kAngleSize);
  return std::max(count, 1);
}

Item readItem(Bytes bytes) {
  constexpr std::uint64_t kHasAngles = 0x10;
  ByteReader reader(bytes);
  Item item;
  item.stream = cleanText(reader.text(5));
  reader.skip(4);  // the kind of stream
  const bool hasAngles = (reader.bigEndian(2) & kHasAngles) != 0;
  reader.skip(1);
  item.begin = static_cast<std::uint32_t>(reader.bigEndian(4));
  item.end = static_cast<std::uint32_t>(reader.bigEndian(4));
  reader.skip(8 + 1 + 1 + 2);  // what users may not do, random access, still pictures
  if (hasAngles) item.angles = readAngles(reader);
  item.streams = reader.take(reader.bigEndian(2));
  return item;
}

// The language in a stream's attributes; where it is depends on the coding.
std::string languageOf(Bytes attributes) {
  constexpr std::size_t kLanguage = 3;
  constexpr std::uint64_t kPictures = 0x90;
  constexpr std::uint64_t kMenus = 0x91;
  ByteReader reader(attributes);
  const std::uint64_t coding = reader.bigEndian(1);
  // Before it are the channels of sound, or the character set of text.
  if (coding != kPictures && coding != kMenus) reader.skip(1);
  std::string language(reader.text(kLanguage));
  const bool isOne =
      language.size() == kLanguage && std::all_of(language.begin(), language.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
      });
  if (!isOne) return std::string(media::kUnknownLanguage);
  for (char& c : language) c = static_cast<char>(std::tolower(c));
  return language;
}

// The next COUNT streams' languages.
std::vector<std::string> readLanguages(ByteReader& streams, std::uint64_t count) {
  std::vector<std::string> found;
  for (std::uint64_t i = 0; i < count && !streams.failed(); ++i) {
    streams.skip(streams.bigEndian(1));  // where the stream is
    const Bytes attributes = streams.take(streams.bigEndian(1));
    if (!streams.failed() && found.size() < media::kMostTitleLanguages)
      found.push_back(languageOf(attributes));
  }
  return found;
}

// Whether all of them are there.
bool addLanguages(Bytes streams, media::DiscTitle& title) {
  ByteReader reader(streams);
  reader.skip(2);
  const std::uint64_t video = reader.bigEndian(1);
  const std::uint64_t audio = reader.bigEndian(1);
  const std::uint64_t subtitles = reader.bigEndian(1);
  reader.skip(1 + 1 + 1 + 1 + 5);  // menus, and second sound and pictures
  readLanguages(reader, video);
  title.audioLanguages = readLanguages(reader, audio);
  title.subtitleLanguages = readLanguages(reader, subtitles);
  return std::max(audio, subtitles) <= media::kMostTitleLanguages;
}

struct Items {
  std::vector<Item> found;
  bool areAll = true;
};

Items readItems(Bytes bytes) {
  ByteReader list(bytes);
  list.skip(4 + 2);
  const std::uint64_t count = list.bigEndian(2);
  list.skip(2);
  Items items;
  for (std::uint64_t i = 0; i < count; ++i) {
    const Bytes item = list.take(list.bigEndian(2));
    if (list.failed()) break;
    if (i == kMostItems) {
      items.areAll = false;
      break;
    }
    items.found.push_back(readItem(item));
  }
  return items;
}

// Whether all of them are there.
bool addChapters(Bytes marks, const std::vector<Item>& items, media::DiscTitle& title) {
  constexpr std::uint64_t kChapter = 1;
  std::vector<double> starts;
  double now = 0;
  for (const Item& item : items) {
    starts.push_back(now);
    now += item.duration();
  }
  ByteReader reader(marks);
  reader.skip(4);
  const std::uint64_t count = reader.bigEndian(2);
  bool areAll = true;
  for (std::uint64_t i = 0; i < count; ++i) {
    reader.skip(1);
    const std::uint64_t type = reader.bigEndian(1);
    const std::uint64_t place = reader.bigEndian(2);
    const std::uint64_t time = reader.bigEndian(4);
    reader.skip(2 + 4);
    if (reader.failed()) break;
    if (type != kChapter || place >= items.size()) continue;
    if (title.chapters.size() == media::kMostTitleChapters) {
      areAll = false;
      break;
    }
    const std::uint32_t begin = items[place].begin;
    const double within = time > begin ? static_cast<double>(time - begin) / kTicksPerSecond : 0;
    title.chapters.push_back(starts[place] + within);
  }
  title.chapterCount = static_cast<int>(title.chapters.size());
  return areAll;
}

// Whether the title has all languages of its longest item.
bool addItems(const std::vector<Item>& items, media::DiscTitle& title) {
  std::set<std::string_view> known;
  const Item* longest = nullptr;
  for (const Item& item : items) {
    title.duration += item.duration();
    title.angles = std::max(title.angles, item.angles);
    if (known.insert(item.stream).second) title.streams.push_back(item.stream);
    // A logo at the beginning has fewer streams than the film.
    if (longest == nullptr || item.duration() > longest->duration()) longest = &item;
  }
  return longest == nullptr || addLanguages(longest->streams, title);
}

}  // namespace

media::DiscIndex readPlaylist(std::string_view fileName, std::span<const std::uint8_t> bytes) {
  constexpr std::string_view kMagic = "MPLS";
  constexpr std::size_t kVersionSize = 4;
  ByteReader header(bytes);
  media::DiscIndex index;
  if (header.text(kMagic.size()) != kMagic) return index;
  header.skip(kVersionSize);
  const std::uint64_t list = header.bigEndian(4);
  const std::uint64_t marks = header.bigEndian(4);
  if (header.failed() || list >= bytes.size()) return index;
  index.kind = media::DiscKind::kBluray;
  media::DiscTitle& title = index.playlists.emplace_back();
  title.source = cleanText(fileName);
  const Items items = readItems(bytes.subspan(list));
  const bool hasLanguages = addItems(items.found, title);
  const bool hasChapters =
      marks >= bytes.size() || addChapters(bytes.subspan(marks), items.found, title);
  index.isIncomplete = !(items.areAll && hasLanguages && hasChapters);
  return index;
}

}  // namespace kolum::headers
