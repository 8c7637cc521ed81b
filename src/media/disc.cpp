#include "media/disc.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <iterator>
#include <utility>

#include "base/clean_text.h"
#include "base/text.h"

namespace kolum::media {

namespace {

constexpr std::size_t kLongestName = 255;

template <typename Value>
void append(std::vector<Value>& to, std::vector<Value>& from) {
  to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
}

bool areLanguages(const std::vector<std::string>& languages) {
  constexpr std::size_t kLongestLanguage = 3;
  return languages.size() <= kMostTitleLanguages &&
         std::all_of(languages.begin(), languages.end(), [](const std::string& language) {
           return isCleanText(language, kLongestLanguage);
         });
}

bool isTime(double seconds) {
  return std::isfinite(seconds) && seconds >= 0;
}

bool isValid(const DiscTitle& title) {
  return isCleanText(title.source, kLongestName) && isTime(title.duration) &&
         title.chapterCount >= 0 && title.chapters.size() <= kMostTitleChapters &&
         std::all_of(title.chapters.begin(), title.chapters.end(), isTime) && title.angles >= 0 &&
         areLanguages(title.audioLanguages) && areLanguages(title.subtitleLanguages) &&
         std::all_of(title.streams.begin(), title.streams.end(),
                     [](const std::string& stream) { return isCleanText(stream, kLongestName); });
}

bool areValid(const std::vector<DiscTitle>& titles) {
  return titles.size() <= kMostDiscTitles &&
         std::all_of(titles.begin(), titles.end(),
                     [](const DiscTitle& title) { return isValid(title); });
}

// Visits all titles of an index.
template <typename Index, typename Visit>
void forEachTitle(Index& index, Visit visit) {
  for (auto& set : index.titleSets)
    for (auto& title : set.titles) visit(title);
  for (auto& title : index.playlists) visit(title);
}

// What all titles of an index have together.
struct Sums {
  std::size_t chapters = 0;
  std::size_t streams = 0;

  void add(const DiscTitle& title) {
    chapters += title.chapters.size();
    streams += title.streams.size();
  }
};

Sums sumsOf(const DiscIndex& index) {
  Sums sums;
  forEachTitle(index, [&](const DiscTitle& title) { sums.add(title); });
  return sums;
}

// Takes from OTHER what would be too much together with BEFORE.
void limit(const DiscIndex& before, DiscIndex& other) {
  Sums sums = sumsOf(before);
  forEachTitle(other, [&](DiscTitle& title) {
    sums.add(title);
    if (sums.chapters <= kMostDiscChapters && sums.streams <= kMostDiscStreams) return;
    if (sums.chapters > kMostDiscChapters) title.chapters.clear();
    if (sums.streams > kMostDiscStreams) title.streams.clear();
    other.isIncomplete = true;
  });
  if (before.playlists.size() + other.playlists.size() > kMostDiscTitles) {
    other.playlists.clear();
    other.isIncomplete = true;
  }
}

bool isWithinSums(const DiscIndex& index) {
  const Sums sums = sumsOf(index);
  return sums.chapters <= kMostDiscChapters && sums.streams <= kMostDiscStreams;
}

const DvdTitleSet* titleSet(const DiscIndex& index, int number) {
  const auto found = std::find_if(index.titleSets.begin(), index.titleSets.end(),
                                  [number](const auto& set) { return set.number == number; });
  return found != index.titleSets.end() ? &*found : nullptr;
}

// Makes the titles of a DVD from its list of titles and from what its title sets say of each.
class DvdTitles {
 public:
  explicit DvdTitles(const DiscIndex& index) : index_(index) {}

  void collect() {
    for (const DvdTitle& line : index_.dvdTitles) add(line);
    // Without a list, the title sets say what there is.
    if (!index_.dvdTitles.empty()) return;
    for (const DvdTitleSet& set : index_.titleSets)
      for (std::size_t i = 0; i < set.titles.size(); ++i)
        add({.titleSet = set.number, .numberInSet = static_cast<int>(i) + 1});
  }
  std::vector<DiscTitle> titles;
  std::vector<int> sets;  // in the same order: where each title is
  bool isIncomplete = false;

 private:
  void add(const DvdTitle& line) {
    if (titles.size() == kMostDiscTitles) {
      isIncomplete = true;
      return;
    }
    DiscTitle& title = titles.emplace_back();
    sets.push_back(line.titleSet);
    const DvdTitleSet* set = titleSet(index_, line.titleSet);
    const auto place = static_cast<std::size_t>(line.numberInSet) - 1;
    if (set != nullptr && place < set->titles.size()) copy(set->titles[place], title);
    title.angles = line.angles;
    if (title.chapterCount == 0) title.chapterCount = line.chapterCount;
  }

  // Any number of lines may lead to the same title. Streams are of Blu-ray discs only.
  void copy(const DiscTitle& from, DiscTitle& to) {
    to.source = from.source;
    to.duration = from.duration;
    to.chapterCount = from.chapterCount;
    to.audioLanguages = from.audioLanguages;
    to.subtitleLanguages = from.subtitleLanguages;
    chapters_ += from.chapters.size();
    if (chapters_ <= kMostDiscChapters)
      to.chapters = from.chapters;
    else
      isIncomplete = true;
  }

  const DiscIndex& index_;
  std::size_t chapters_ = 0;
};

// The longest title of those that a condition holds for, the first among equals.
template <typename Condition>
std::optional<std::size_t> longest(const std::vector<DiscTitle>& titles, Condition isPossible) {
  std::optional<std::size_t> best;
  for (std::size_t i = 0; i < titles.size(); ++i)
    if (isPossible(i) && (!best || titles[i].duration > titles[*best].duration)) best = i;
  return best;
}

bool isLongest(const std::vector<DiscTitle>& titles, std::size_t title) {
  return std::all_of(titles.begin(), titles.end(), [&](const DiscTitle& other) {
    return other.duration <= titles[title].duration;
  });
}

bool isOneOfTheLongest(const std::vector<DiscTitle>& titles, std::size_t title) {
  return std::count_if(titles.begin(), titles.end(), [&](const DiscTitle& other) {
           return other.duration == titles[title].duration;
         }) > 1;
}

void chooseMainTitle(Disc& disc, std::optional<std::size_t> title, const std::string& otherwise) {
  if (!title) return;
  disc.mainTitle = *title + 1;
  if (disc.titles.size() == 1)
    disc.mainTitleReason = "the only title";
  else
    disc.mainTitleReason = otherwise;
}

void chooseOfDvd(Disc& disc, const std::vector<int>& sets, const std::string& mainFile) {
  const auto file = titleSetFile(mainFile);
  if (!file) return;
  const auto title = longest(disc.titles, [&](std::size_t i) { return sets[i] == file->titleSet; });
  if (!title) return;
  const std::string set = "title set " + std::to_string(file->titleSet);
  if (!isLongest(disc.titles, *title))
    chooseMainTitle(disc, title,
                    "the longest title of " + set + ", which has the longest program chain");
  else if (isOneOfTheLongest(disc.titles, *title))
    chooseMainTitle(disc, title, "one of the longest titles, in " + set + ", the main one");
  else
    chooseMainTitle(disc, title, "the longest title");
}

void chooseOfBluray(Disc& disc, const std::string& mainFile) {
  const std::string stream = mainFile.substr(0, mainFile.find('.'));
  if (stream.empty()) return;
  const auto title = longest(disc.titles, [&](std::size_t i) {
    const auto& streams = disc.titles[i].streams;
    return std::find(streams.begin(), streams.end(), stream) != streams.end();
  });
  chooseMainTitle(disc, title, "the longest title that plays the largest stream file, " + mainFile);
}

}  // namespace

void DiscIndex::add(DiscIndex other) {
  if (other.kind != DiscKind::kNone) kind = other.kind;
  limit(*this, other);
  isIncomplete = isIncomplete || other.isIncomplete;
  bytes += other.bytes;
  append(dvdTitles, other.dvdTitles);
  append(titleSets, other.titleSets);
  append(playlists, other.playlists);
}

bool DiscIndex::isFull() const {
  return playlists.size() >= kMostDiscTitles || bytes >= kMostDiscIndexBytes;
}

bool isValid(const DiscIndex& index) {
  return isWithinSums(index) && index.dvdTitles.size() <= kMostDiscTitles &&
         index.titleSets.size() <= kMostDiscTitles &&
         std::all_of(index.titleSets.begin(), index.titleSets.end(),
                     [](const DvdTitleSet& set) {
                       return set.longestChain >= 0 && areValid(set.titles);
                     }) &&
         std::all_of(
             index.dvdTitles.begin(), index.dvdTitles.end(),
             [](const DvdTitle& title) { return title.chapterCount >= 0 && title.angles >= 0; }) &&
         areValid(index.playlists) && isCleanText(index.mainFile, kLongestName);
}

Disc discOf(DiscIndex index) {
  Disc disc;
  disc.kind = index.kind;
  disc.isIncomplete = index.isIncomplete;
  if (index.kind == DiscKind::kDvd) {
    DvdTitles dvd(index);
    dvd.collect();
    disc.titles = std::move(dvd.titles);
    disc.isIncomplete = disc.isIncomplete || dvd.isIncomplete;
    chooseOfDvd(disc, dvd.sets, index.mainFile);
  } else {
    disc.titles = std::move(index.playlists);
    chooseOfBluray(disc, index.mainFile);
  }
  return disc;
}

std::string mainFileOf(const DiscIndex& index, const std::vector<TitleSetSize>& sets) {
  const TitleSetSize* best = nullptr;
  int bestChain = 0;
  for (const TitleSetSize& set : sets) {
    const DvdTitleSet* known = titleSet(index, set.number);
    const int chain = known != nullptr ? known->longestChain : 0;
    const bool isBetter =
        best == nullptr || chain > bestChain || (chain == bestChain && set.size > best->size);
    if (!isBetter) continue;
    best = &set;
    bestChain = chain;
  }
  return best != nullptr ? best->firstFile : "";
}

std::optional<TitleSetFile> titleSetFile(std::string_view name) {
  constexpr std::string_view kPattern = "VTS_00_0.";
  constexpr std::size_t kLength = kPattern.size() + 3;
  if (name.size() != kLength) return std::nullopt;
  for (std::size_t i = 0; i < kPattern.size(); ++i) {
    const auto byte = static_cast<unsigned char>(name[i]);
    const bool fits =
        kPattern[i] == '0' ? std::isdigit(byte) != 0 : std::toupper(byte) == kPattern[i];
    if (!fits) return std::nullopt;
  }
  return TitleSetFile{(name[4] - '0') * 10 + (name[5] - '0'), name[7] - '0'};
}

}  // namespace kolum::media
