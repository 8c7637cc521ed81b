// libdvdread's own parser is not used for the index files: it crashes on damaged ones.
#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "read/headers/disc_index.h"

namespace kolum::headers {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint64_t kSector = 2048;
constexpr std::string_view kManagerMagic = "DVDVIDEO-VMG";
constexpr std::string_view kTitleSetMagic = "DVDVIDEO-VTS";
// Where the sectors of tables stand.
constexpr std::uint64_t kTitleTable = 0xC4;
constexpr std::uint64_t kChapterTable = 0xC8;
constexpr std::uint64_t kChainTable = 0xCC;

// The number of SIZE bytes at AT; 0 where it reaches beyond the end.
std::uint32_t number(Bytes bytes, std::uint64_t at, std::size_t size) {
  ByteReader reader(bytes);
  reader.skip(at);
  return static_cast<std::uint32_t>(reader.bigEndian(size));
}

bool beginsWith(Bytes bytes, std::string_view magic) {
  return ByteReader(bytes).text(magic.size()) == magic;
}

// The table whose sector stands at AT; empty if there is none.
Bytes table(Bytes index, std::uint64_t at) {
  const std::uint64_t begin = number(index, at, 4) * kSector;
  if (begin == 0 || begin >= index.size()) return {};
  return index.subspan(begin);
}

// Two decimal digits; empty if they are none.
std::optional<int> digits(std::uint32_t byte) {
  const std::uint32_t tens = byte >> 4U & 0xFU;
  const std::uint32_t ones = byte & 0xFU;
  if (tens > 9 || ones > 9) return std::nullopt;
  return static_cast<int>(tens * 10 + ones);
}

struct PlayingTime {
  int seconds = 0;
  double fraction = 0;
  double value() const { return seconds + fraction; }
};

// Hours, minutes, seconds and frames, with two digits in each byte; the highest bits of the frames
// say how many there are in a second. 0 if it is not decimal.
PlayingTime playingTime(std::uint32_t time) {
  const auto hours = digits(time >> 24U & 0xFFU);
  const auto minutes = digits(time >> 16U & 0xFFU);
  const auto seconds = digits(time >> 8U & 0xFFU);
  if (!hours || !minutes || !seconds) return {};
  PlayingTime playing = {.seconds = (*hours * 60 + *minutes) * 60 + *seconds, .fraction = 0};
  const auto frames = digits(time & 0x3FU);
  const std::uint32_t rate = time >> 6U & 3U;
  if (frames && rate == 1) playing.fraction = *frames / 25.0;
  if (frames && rate == 3) playing.fraction = *frames * 1001 / 30000.0;
  return playing;
}

// --- Program chains

struct Chain {
  PlayingTime time;
  std::vector<double> programs;  // where each starts, in seconds
  std::array<bool, 8> audio = {};
  std::array<bool, 32> subtitles = {};
};

// When each cell starts. Of cells that show the same from several angles, only the first takes
// time.
std::vector<double> cellStarts(Bytes chain) {
  constexpr std::uint64_t kCellSize = 24;
  const std::uint32_t count = number(chain, 3, 1);
  const std::uint64_t cells = number(chain, 0xE8, 2);
  std::vector<double> starts;
  double now = 0;
  for (std::uint32_t i = 0; i < count && cells != 0; ++i) {
    starts.push_back(now);
    const std::uint64_t cell = cells + i * kCellSize;
    const bool isFurtherAngle = number(chain, cell, 1) >> 6U > 1;
    if (!isFurtherAngle) now += playingTime(number(chain, cell + 4, 4)).value();
  }
  return starts;
}

Chain readChain(Bytes chain) {
  constexpr std::uint64_t kAudio = 0x0C;
  constexpr std::uint64_t kSubtitles = 0x1C;
  Chain found;
  found.time = playingTime(number(chain, 4, 4));
  for (std::size_t i = 0; i < found.audio.size(); ++i)
    found.audio[i] = number(chain, kAudio + i * 2, 1) >> 7U != 0;
  for (std::size_t i = 0; i < found.subtitles.size(); ++i)
    found.subtitles[i] = number(chain, kSubtitles + i * 4, 1) >> 7U != 0;
  const std::vector<double> starts = cellStarts(chain);
  const std::uint32_t programs = number(chain, 2, 1);
  const std::uint64_t map = number(chain, 0xE6, 2);
  for (std::uint32_t i = 0; i < programs && map != 0; ++i) {
    const std::uint32_t cell = number(chain, map + i, 1);
    found.programs.push_back(cell > 0 && cell <= starts.size() ? starts[cell - 1] : 0);
  }
  return found;
}

// The chains of a title set by their numbers, each read once.
class Chains {
 public:
  explicit Chains(Bytes index) : table_(table(index, kChainTable)) {
    count_ = number(table_, 0, 2);
  }

  const Chain* at(std::uint32_t chainNumber) {
    if (chainNumber == 0 || chainNumber > count_) return nullptr;
    const auto known = chains_.find(chainNumber);
    if (known != chains_.end()) return &known->second;
    return &chains_.emplace(chainNumber, readChain(bytesOf(chainNumber))).first->second;
  }

  int longest() const {
    int longest = 0;
    for (std::uint32_t i = 1; i <= count_; ++i)
      longest = std::max(longest, playingTime(number(bytesOf(i), 4, 4)).seconds);
    return longest;
  }

 private:
  // An entry is eight bytes after the table's eight; its second half is the chain's offset.
  Bytes bytesOf(std::uint32_t chainNumber) const {
    const std::uint64_t begin = number(table_, std::uint64_t{chainNumber} * 8 + 4, 4);
    return begin < table_.size() ? table_.subspan(begin) : Bytes();
  }

  Bytes table_;
  std::uint32_t count_ = 0;
  std::map<std::uint32_t, Chain> chains_;
};

// --- Languages

struct StreamTable {
  std::uint64_t count;  // where the number of streams stands
  std::uint64_t first;  // and their attributes
  std::uint64_t size;   // of each
  unsigned typeShift;   // where, in its first byte, the type of the language is
};

constexpr StreamTable kAudio = {0x202, 0x204, 8, 2};
constexpr StreamTable kSubtitles = {0x254, 0x256, 6, 0};

std::string language(Bytes attributes, unsigned typeShift) {
  const bool isStated = (number(attributes, 0, 1) >> typeShift & 3U) == 1;
  std::string letters;
  for (const std::uint64_t at : {2U, 3U}) {
    const int letter = static_cast<int>(number(attributes, at, 1));
    if (!isStated || letter > 'z' || std::isalpha(letter) == 0)
      return std::string(media::kUnknownLanguage);
    letters += static_cast<char>(std::tolower(letter));
  }
  return letters;
}

// Of the streams that the title set describes and the chain has.
template <std::size_t kMost>
std::vector<std::string> languages(Bytes index, const StreamTable& streams,
                                   const std::array<bool, kMost>& isThere) {
  const std::size_t count = std::min<std::size_t>(number(index, streams.count, 2), kMost);
  std::vector<std::string> found;
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint64_t at = streams.first + i * streams.size;
    if (isThere[i] && at < index.size())
      found.push_back(language(index.subspan(at), streams.typeShift));
  }
  return found;
}

// --- Titles of a title set

class TitleReader {
 public:
  TitleReader(Bytes index, std::string_view fileName)
      : index_(index), fileName_(fileName), chains_(index) {}

  std::vector<media::DiscTitle> titles();
  // Whether titles() has left out none of them, nor a chapter.
  bool haveAll() const { return haveAll_; }
  int longestChain() const { return chains_.longest(); }

 private:
  media::DiscTitle title(Bytes chapters);

  Bytes index_;
  std::string fileName_;
  Chains chains_;
  bool haveAll_ = true;
};

// CHAPTERS: for each, the numbers of a chain and of a program in it.
media::DiscTitle TitleReader::title(Bytes chapters) {
  constexpr std::size_t kChapterSize = 4;
  media::DiscTitle title;
  title.source = fileName_;
  const std::size_t count = std::min(chapters.size() / kChapterSize, media::kMostTitleChapters);
  if (count < chapters.size() / kChapterSize) haveAll_ = false;
  std::map<std::uint32_t, double> starts;  // of chains
  const Chain* first = nullptr;
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t chainNumber = number(chapters, i * kChapterSize, 2);
    const std::uint32_t program = number(chapters, i * kChapterSize + 2, 2);
    const Chain* chain = chains_.at(chainNumber);
    if (chain == nullptr) continue;
    if (first == nullptr) first = chain;
    const auto [start, isNew] = starts.emplace(chainNumber, title.duration);
    if (isNew) title.duration += chain->time.value();
    const bool isKnown = program > 0 && program <= chain->programs.size();
    title.chapters.push_back(start->second + (isKnown ? chain->programs[program - 1] : 0));
  }
  title.chapterCount = static_cast<int>(title.chapters.size());
  if (first == nullptr) return title;
  title.audioLanguages = languages(index_, kAudio, first->audio);
  title.subtitleLanguages = languages(index_, kSubtitles, first->subtitles);
  return title;
}

std::vector<media::DiscTitle> TitleReader::titles() {
  constexpr std::uint32_t kMostTitles = 99;
  constexpr std::uint64_t kFirst = 8;
  const Bytes chapters = table(index_, kChapterTable);
  const std::uint32_t count = std::min(number(chapters, 0, 2), kMostTitles);
  if (count < number(chapters, 0, 2)) haveAll_ = false;
  const auto place = [&](std::uint32_t i) -> std::uint64_t {
    // The last byte of the table precedes the end of the last title.
    const std::uint64_t at = i < count ? number(chapters, kFirst + std::uint64_t{i} * 4, 4)
                                       : std::uint64_t{number(chapters, 4, 4)} + 1;
    return std::min<std::uint64_t>(at, chapters.size());
  };
  std::vector<media::DiscTitle> found;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint64_t begin = place(i);
    const std::uint64_t end = std::max(begin, place(i + 1));
    found.push_back(title(chapters.subspan(begin, end - begin)));
  }
  return found;
}

}  // namespace

media::DiscIndex readDvdTitles(std::span<const std::uint8_t> bytes) {
  constexpr std::uint64_t kFirst = 8;
  constexpr std::uint64_t kEntrySize = 12;
  media::DiscIndex index;
  if (!beginsWith(bytes, kManagerMagic)) return index;
  index.kind = media::DiscKind::kDvd;
  Bytes titles = table(bytes, kTitleTable);
  titles =
      titles.first(std::min<std::size_t>(titles.size(), std::size_t{number(titles, 4, 4)} + 1));
  const auto count = std::min<std::uint64_t>(number(titles, 0, 2), media::kMostDiscTitles);
  index.isIncomplete = count < number(titles, 0, 2);
  for (std::uint64_t i = 0; i < count; ++i) {
    const std::uint64_t at = kFirst + i * kEntrySize;
    if (at + kEntrySize > titles.size()) break;
    index.dvdTitles.push_back({.titleSet = static_cast<int>(number(titles, at + 6, 1)),
                               .numberInSet = static_cast<int>(number(titles, at + 7, 1)),
                               .chapterCount = static_cast<int>(number(titles, at + 2, 2)),
                               .angles = static_cast<int>(number(titles, at + 1, 1))});
  }
  return index;
}

media::DiscIndex readDvdTitleSet(std::string_view fileName, std::span<const std::uint8_t> bytes) {
  media::DiscIndex index;
  const auto file = media::titleSetFile(fileName);
  if (!file || !beginsWith(bytes, kTitleSetMagic)) return index;
  index.kind = media::DiscKind::kDvd;
  TitleReader reader(bytes, fileName);
  index.titleSets.push_back(
      {.number = file->titleSet, .longestChain = reader.longestChain(), .titles = reader.titles()});
  index.isIncomplete = !reader.haveAll();
  return index;
}

}  // namespace kolum::headers
