// What the index files of a DVD or a Blu-ray disc say of its titles.
#ifndef KOLUM_MEDIA_DISC_H
#define KOLUM_MEDIA_DISC_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kolum::media {

// Real DVDs have 99 titles at most; some Blu-ray discs have hundreds of playlists, to confuse.
inline constexpr std::size_t kMostDiscTitles = 1000;
// Of one title: the formats have room for 999.
inline constexpr std::size_t kMostTitleChapters = 1000;
// Of all titles together. The times of further chapters and the names of further streams are left
// out.
inline constexpr std::size_t kMostDiscChapters = 50'000;
inline constexpr std::size_t kMostDiscStreams = 100'000;
// Of one title: a playlist has room for 255 streams of each kind, real ones have some 30.
inline constexpr std::size_t kMostTitleLanguages = 64;
// Of all index files of a disc together. Real discs have one or two megabytes.
inline constexpr std::uint64_t kMostDiscIndexBytes = std::uint64_t{64} << 20;

// For a stream whose language the disc does not state.
inline constexpr std::string_view kUnknownLanguage = "und";

enum class DiscKind { kNone, kDvd, kBluray };

struct DiscTitle {
  std::string source;   // the index file that describes it, without folders
  double duration = 0;  // seconds
  int chapterCount = 0;
  std::vector<double> chapters;  // where they start, in seconds
  int angles = 1;
  // A language for each stream, as the disc states it: two letters on DVDs, three on Blu-ray discs.
  std::vector<std::string> audioLanguages;
  std::vector<std::string> subtitleLanguages;
  // Of Blu-ray discs: the streams that it plays, "00001", each once.
  std::vector<std::string> streams;
};

// A line of a DVD's list of all titles.
struct DvdTitle {
  int titleSet = 0;
  int numberInSet = 0;  // from 1
  int chapterCount = 0;
  int angles = 1;
};

struct DvdTitleSet {
  int number = 0;
  int longestChain = 0;  // seconds that its longest program chain plays
  std::vector<DiscTitle> titles;
};

// What one index file says, or all of a disc.
struct DiscIndex {
  DiscKind kind = DiscKind::kNone;
  std::vector<DvdTitle> dvdTitles;
  std::vector<DvdTitleSet> titleSets;
  std::vector<DiscTitle> playlists;
  // Of a whole disc: the file with the main title, "VTS_02_1.VOB" or "00001.m2ts".
  std::string mainFile;
  // Something was left out, because a limit above was reached.
  bool isIncomplete = false;
  // Of index files that were read; not on the way between processes.
  std::uint64_t bytes = 0;

  // Takes over what another index file of the same disc says, within the limits for all titles.
  void add(DiscIndex other);
  // No further index file may be read.
  bool isFull() const;
};

// Whether it keeps to the limits above, and its numbers and texts are as readers promise.
bool isValid(const DiscIndex& index);

// A disc's titles in their order; its main title counts from 1.
struct Disc {
  DiscKind kind = DiscKind::kNone;
  std::vector<DiscTitle> titles;
  std::optional<std::size_t> mainTitle;
  std::string mainTitleReason;  // in words
  bool isIncomplete = false;    // there are more titles, chapters or streams than are read
};

Disc discOf(DiscIndex index);

// A title set for the choice of the main one.
struct TitleSetSize {
  int number = 0;
  std::string firstFile;
  std::int64_t size = 0;
};

// The file that the main title of a DVD begins with, by the rule of DVDGetMainVTSNo(): the title
// set with the longest program chain, among equals the larger one. SETS are in the order of their
// numbers. Empty if there are none.
std::string mainFileOf(const DiscIndex& index, const std::vector<TitleSetSize>& sets);

// The title set of a file named "VTS_nn_p.VOB" or "VTS_nn_p.IFO", in any letter case, and its part.
struct TitleSetFile {
  int titleSet = 0;
  int part = 0;
};
std::optional<TitleSetFile> titleSetFile(std::string_view name);

}  // namespace kolum::media

#endif
