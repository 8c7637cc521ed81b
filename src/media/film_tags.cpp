#include "media/film_tags.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

#include "base/clean_text.h"
#include "base/text.h"
#include "base/xml_node.h"
#include "media/container.h"

namespace kolum::media {

namespace {

enum class Field {
  kTitle,
  kArtist,
  kShow,
  kSeason,
  kEpisode,
  kEpisodeId,
  kNetwork,
  kGenre,
  kDescription,
  kSynopsis,
  kComment,
  kCopyright,
  kDirector,
  kActor,
  kRecorded,  // when it was filmed
  kStored,    // when the file was made
  kDate,
  kMake,
  kModel,
  kSoftware,
  kAndroidVersion,
  kPosition,
  kPlaceName,
  kContentIdentifier,
  kLivePhoto,
  kEncoder,
  kMovieProperties,
};

struct KeyRow {
  std::string_view key;
  Field field;
};

// The keys of all containers, as FFmpeg names them; letter case does not count. Of a single value,
// the first row that the file has counts. A language ("title-eng") may follow keys that the file
// does not have without one.
constexpr auto kKeys = std::to_array<KeyRow>({
    {"com.apple.quicktime.title", Field::kTitle},
    {"episode/title", Field::kTitle},
    {"movie/title", Field::kTitle},
    {"title", Field::kTitle},
    {"com.apple.quicktime.displayname", Field::kTitle},
    {"com.apple.quicktime.artist", Field::kArtist},
    {"artist", Field::kArtist},
    {"movie/artist", Field::kArtist},
    {"author", Field::kArtist},
    {"com.apple.quicktime.author", Field::kArtist},
    {"performer", Field::kArtist},
    {"show", Field::kShow},
    {"collection/title", Field::kShow},
    {"WM/SeriesName", Field::kShow},
    {"season_number", Field::kSeason},
    {"season/part_number", Field::kSeason},
    {"WM/SeasonNumber", Field::kSeason},
    {"season", Field::kSeason},
    {"episode_sort", Field::kEpisode},
    {"episode/part_number", Field::kEpisode},
    {"WM/EpisodeNumber", Field::kEpisode},
    {"episode", Field::kEpisode},
    {"episode_id", Field::kEpisodeId},
    {"network", Field::kNetwork},
    {"WM/MediaNetworkAffiliation", Field::kNetwork},
    {"com.apple.quicktime.genre", Field::kGenre},
    {"genre", Field::kGenre},
    {"movie/genre", Field::kGenre},
    {"com.apple.quicktime.description", Field::kDescription},
    {"description", Field::kDescription},
    {"movie/description", Field::kDescription},
    {"WM/SubTitleDescription", Field::kDescription},
    {"ISBJ", Field::kDescription},
    {"subject", Field::kDescription},
    {"synopsis", Field::kSynopsis},
    {"movie/synopsis", Field::kSynopsis},
    {"summary", Field::kSynopsis},
    {"movie/summary", Field::kSynopsis},
    {"com.apple.quicktime.comment", Field::kComment},
    {"comment", Field::kComment},
    {"movie/comment", Field::kComment},
    {"com.apple.quicktime.copyright", Field::kCopyright},
    {"copyright", Field::kCopyright},
    {"movie/copyright", Field::kCopyright},
    {"com.apple.quicktime.director", Field::kDirector},
    {"director", Field::kDirector},
    {"movie/director", Field::kDirector},
    {"WM/Director", Field::kDirector},
    {"actor", Field::kActor},
    {"movie/actor", Field::kActor},
    {"lead_performer", Field::kActor},
    {"ISTR", Field::kActor},
    {"com.apple.quicktime.creationdate", Field::kRecorded},
    {"date_recorded", Field::kRecorded},
    {"movie/date_recorded", Field::kRecorded},
    {"date_digitized", Field::kRecorded},
    {"creation_time", Field::kStored},
    {"date", Field::kDate},
    {"date_released", Field::kDate},
    {"movie/date_released", Field::kDate},
    {"date_release", Field::kDate},
    {"com.apple.quicktime.year", Field::kDate},
    {"WM/Year", Field::kDate},
    {"year", Field::kDate},
    {"com.apple.quicktime.make", Field::kMake},
    {"com.android.manufacturer", Field::kMake},
    {"make", Field::kMake},
    {"maker", Field::kMake},
    {"com.apple.quicktime.model", Field::kModel},
    {"com.android.model", Field::kModel},
    {"model", Field::kModel},
    {"com.apple.quicktime.software", Field::kSoftware},
    {"software", Field::kSoftware},
    {"firmware", Field::kSoftware},
    {"com.android.version", Field::kAndroidVersion},
    {"com.apple.quicktime.location.ISO6709", Field::kPosition},
    {"location", Field::kPosition},
    {"xyz", Field::kPosition},
    {"com.apple.quicktime.location.name", Field::kPlaceName},
    {"recording_location", Field::kPlaceName},
    {"movie/recording_location", Field::kPlaceName},
    {"com.apple.quicktime.content.identifier", Field::kContentIdentifier},
    {"com.apple.quicktime.live-photo.auto", Field::kLivePhoto},
    {"com.apple.quicktime.live-photo.vitality-score", Field::kLivePhoto},
    {"com.apple.quicktime.live-photo.vitality-scoring-version", Field::kLivePhoto},
    {"encoder", Field::kEncoder},
    {"iTunMOVI", Field::kMovieProperties},
});

// Cameras that write local time where MP4 demands universal time, by the beginning of the name that
// they give to a track.
constexpr std::string_view kLocalTimeHandlers[] = {"GoPro"};

bool isRowOf(const KeyRow& row, std::string_view key) {
  return key.size() == row.key.size() && equalsIgnoringCase(key, row.key);
}

// The key with a language of ISO 639-2 behind it.
bool isRowWithLanguage(const KeyRow& row, std::string_view key) {
  constexpr std::size_t kLanguage = 4;
  return key.size() == row.key.size() + kLanguage && key[row.key.size()] == '-' &&
         equalsIgnoringCase(key.substr(0, row.key.size()), row.key);
}

// The values of one field, those of earlier rows first.
class Values {
 public:
  explicit Values(const Container& container) {
    for (const auto& [key, value] : container.tags)
      if (!value.empty()) add(key, value);
    for (std::size_t i = 0; i < kKeys.size(); ++i)
      if (plain_[i].empty()) plain_[i] = std::move(withLanguage_[i]);
  }

  std::vector<std::string_view> of(Field field) const {
    std::vector<std::string_view> found;
    for (std::size_t i = 0; i < kKeys.size(); ++i)
      if (kKeys[i].field == field) found.insert(found.end(), plain_[i].begin(), plain_[i].end());
    return found;
  }
  std::string_view first(Field field) const {
    const auto found = of(field);
    return found.empty() ? "" : found.front();
  }

 private:
  using Lists = std::array<std::vector<std::string_view>, kKeys.size()>;

  void add(std::string_view key, std::string_view value) {
    for (std::size_t i = 0; i < kKeys.size(); ++i) {
      if (isRowOf(kKeys[i], key)) return addTo(plain_[i], value);
      if (isRowWithLanguage(kKeys[i], key)) return addTo(withLanguage_[i], value);
    }
  }
  static void addTo(std::vector<std::string_view>& list, std::string_view value) {
    if (list.size() < kMostFilmNames) list.push_back(value);
  }

  Lists plain_;
  Lists withLanguage_;
};

std::string trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  const std::size_t last = text.find_last_not_of(" \t\r\n");
  return first == std::string_view::npos ? "" : cleanText(text.substr(first, last - first + 1));
}

void addName(std::vector<std::string>& names, std::string_view value) {
  std::string name = trimmed(value);
  const bool isNew = std::find(names.begin(), names.end(), name) == names.end();
  if (!name.empty() && isNew && names.size() < kMostFilmNames) names.push_back(std::move(name));
}

std::vector<std::string> namesOf(const Values& values, Field field) {
  std::vector<std::string> names;
  for (const std::string_view value : values.of(field)) addName(names, value);
  return names;
}

std::string textOf(const Values& values, Field field) {
  for (const std::string_view value : values.of(field))
    if (std::string text = trimmed(value); !text.empty()) return text;
  return "";
}

// From 0 on; "3/10" is 3.
std::optional<int> numberOf(const Values& values, Field field) {
  constexpr int kMost = 9999;
  const std::string text = textOf(values, field);
  int number = -1;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  const bool isWhole = rest == end || *rest == '/';
  if (error != std::errc() || !isWhole || number < 0 || number > kMost) return std::nullopt;
  return number;
}

// "S01E02"; the numbers have their own keys where an identifier is anything else.
void readEpisodeId(FilmTags& tags) {
  constexpr int kMost = 9999;
  const std::string& id = tags.episodeId;
  if (id.size() < 4 || lowerCase(id[0]) != 's') return;
  int season = -1;
  int episode = -1;
  const char* const end = id.data() + id.size();
  const auto afterSeason = std::from_chars(id.data() + 1, end, season);
  if (afterSeason.ec != std::errc() || afterSeason.ptr == end || lowerCase(*afterSeason.ptr) != 'e')
    return;
  const auto afterEpisode = std::from_chars(afterSeason.ptr + 1, end, episode);
  if (afterEpisode.ec != std::errc() || afterEpisode.ptr != end) return;
  if (season < 0 || season > kMost || episode < 0 || episode > kMost) return;
  if (!tags.season) tags.season = season;
  if (!tags.episode) tags.episode = episode;
}

// The names in one list of iTunes' movie properties, a property list in XML: each is the text of
// the key "name" of an element.
void addNames(const XMLNode& people, std::vector<std::string>& names) {
  for (const XMLNode& person : people.getChildNodes("dict")) {
    bool isName = false;
    for (const XMLNode& each : person.getChildNodes()) {
      if (isName && each.getName() == "string") addName(names, each.getText());
      isName = each.getName() == "key" && each.getText() == "name";
    }
  }
}

void readMovieProperties(std::string_view text, FilmTags& tags) {
  constexpr std::size_t kLongest = std::size_t{1} << 20;
  if (text.empty() || text.size() > kLongest) return;
  std::string key;
  for (const XMLNode& each : XMLNode::parseString(text, "dict").getChildNodes()) {
    if (key == "cast") addNames(each, tags.actors);
    if (key == "directors") addNames(each, tags.directors);
    key = each.getName() == "key" ? each.getText() : "";
  }
}

bool writesLocalTime(const Container& container) {
  return std::any_of(container.streams.begin(), container.streams.end(), [](const Stream& stream) {
    if (!stream.details) return false;
    const std::string name = trimmed(stream.details->handlerName);
    return std::any_of(std::begin(kLocalTimeHandlers), std::end(kLocalTimeHandlers),
                       [&](std::string_view each) { return name.starts_with(each); });
  });
}

// FFmpeg marks universal time with "Z". Clocks that were never set count from 1904 or 1970 on.
std::optional<FilmDate> storedDate(std::string_view text, const Container& container) {
  constexpr int kUnsetClock = 1970;
  auto date = filmDateOf(text);
  if (!date || date->year <= kUnsetClock) return std::nullopt;
  if (date->offset != 0) return date;
  const bool isLocal = writesLocalTime(container);
  date->certainty = isLocal ? DateCertainty::kLocal : DateCertainty::kUtc;
  if (isLocal) date->offset.reset();
  return date;
}

std::string_view storedTime(const Values& values, const Container& container) {
  if (const std::string_view found = values.first(Field::kStored); !found.empty()) return found;
  for (const Stream& stream : container.streams)
    if (stream.details && !stream.details->creationTime.empty())
      return stream.details->creationTime;
  return "";
}

std::optional<FilmDate> firstDate(const Values& values, Field field) {
  for (const std::string_view value : values.of(field))
    if (const auto date = filmDateOf(value)) return date;
  return std::nullopt;
}

void readDates(const Values& values, const Container& container, FilmTags& tags) {
  tags.date = firstDate(values, Field::kDate);
  tags.created = firstDate(values, Field::kRecorded);
  // Phones write the moment of filming; the release of a film has no time of day.
  if (!tags.created && tags.date && tags.date->time) tags.created = tags.date;
  if (!tags.created) tags.created = storedDate(storedTime(values, container), container);
}

void readPosition(const Values& values, FilmTags& tags) {
  tags.placeName = textOf(values, Field::kPlaceName);
  for (const std::string_view value : values.of(Field::kPosition)) {
    const auto position = positionOf(value);
    if (!position) continue;
    tags.position = position;
    if (tags.placeName.empty()) tags.placeName = trimmed(placeNameOf(value));
    return;
  }
}

}  // namespace

FilmTags filmTagsOf(const Container& container) {
  const Values values(container);
  FilmTags tags = {.title = textOf(values, Field::kTitle),
                   .artists = namesOf(values, Field::kArtist),
                   .show = textOf(values, Field::kShow),
                   .season = numberOf(values, Field::kSeason),
                   .episode = numberOf(values, Field::kEpisode),
                   .episodeId = textOf(values, Field::kEpisodeId),
                   .network = textOf(values, Field::kNetwork),
                   .genres = namesOf(values, Field::kGenre),
                   .description = textOf(values, Field::kDescription),
                   .synopsis = textOf(values, Field::kSynopsis),
                   .comment = textOf(values, Field::kComment),
                   .copyright = textOf(values, Field::kCopyright),
                   .directors = namesOf(values, Field::kDirector),
                   .actors = namesOf(values, Field::kActor),
                   .make = textOf(values, Field::kMake),
                   .model = textOf(values, Field::kModel),
                   .software = textOf(values, Field::kSoftware),
                   .androidVersion = textOf(values, Field::kAndroidVersion),
                   .contentIdentifier = textOf(values, Field::kContentIdentifier),
                   .isLivePhoto = !values.of(Field::kLivePhoto).empty(),
                   .encoder = textOf(values, Field::kEncoder)};
  readEpisodeId(tags);
  readMovieProperties(values.first(Field::kMovieProperties), tags);
  readDates(values, container, tags);
  readPosition(values, tags);
  return tags;
}

}  // namespace kolum::media
