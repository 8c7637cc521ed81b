// Puts what the tags of a song say under many names into one set of values.
#ifndef KOLUM_READ_TAGS_SONG_TAG_BUILDER_H
#define KOLUM_READ_TAGS_SONG_TAG_BUILDER_H

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "media/song_tags.h"

namespace kolum::tags {

// A cover's first bytes say what it is.
inline constexpr std::size_t kCoverHead = std::size_t{32} << 10;

// Text of unknown encoding: UTF-8 if it is that, else Windows-1252, which includes Latin-1. Writers
// put UTF-8 into fields that are Latin-1 by definition, and hardly any other text is valid UTF-8.
std::string utf8Of(std::string_view bytes);

// A file's tags in order of their worth: what one says stands, and later ones add what is missing.
class SongTagBuilder {
 public:
  // What is added from here on is said by the next tag.
  void beginTag() { ++tag_; }

  // A value under the name that Vorbis comments use, or one of its other usual names. Case, spaces
  // and punctuation in NAME make no difference; other names are ignored. NULs separate values.
  void add(std::string_view name, std::string_view value);
  void addPerformer(std::string_view name, std::string_view role);
  // HEAD: the first bytes of BYTES, kCoverHead or fewer.
  void addCover(std::string_view mimeType, std::string_view type, std::string_view description,
                std::span<const std::uint8_t> head, std::uint64_t bytes);
  void addChapter(double start, std::optional<double> end, std::string_view title);
  void addLyrics(std::string_view language);
  // "Popularimeter": 1 to 255, in steps for stars; 0 is unknown.
  void addPopularity(int value);
  // FIELD of the loudness values. The first that is added stands.
  void addGain(std::optional<double> media::ReplayGain::*field, double value);
  // iTunes' ten hexadecimal numbers. They count if there is no other gain.
  void addItunesLoudness(std::string_view numbers);

  // Empty if nothing was said.
  std::optional<media::SongTags> take() &&;

 private:
  enum class Special;
  struct Setter;

  bool owns(const void* list);
  void addTo(std::string& field, std::string_view text);
  void addTo(std::vector<std::string>& field, std::string_view text);
  void addSpecial(Special what, std::string_view text);
  void addPosition(std::optional<int>& number, std::optional<int>& total, std::string_view text);
  void addCount(std::optional<int>& field, std::string_view text);
  void addDate(std::string& field, std::string_view text);
  void addGenre(std::string_view text);
  void addCredited(std::string_view text);
  void addGainText(std::optional<double> media::ReplayGain::*field, std::string_view text);
  void addRating(double value);
  void addFlag(std::optional<bool>& field, std::string_view text);
  bool addChapterText(std::string_view name, std::string_view text);

  media::SongTags tags_;
  std::vector<std::string> allArtists_;
  std::optional<double> itunesGain_;
  std::map<int, std::pair<std::optional<double>, std::string>> namedChapters_;
  std::vector<std::pair<const void*, int>> owners_;
  int tag_ = 0;
  bool isEmpty_ = true;
};

}  // namespace kolum::tags

#endif
