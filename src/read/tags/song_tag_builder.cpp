#include "read/tags/song_tag_builder.h"

#include <id3v1genres.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <variant>

#include "base/text.h"
#include "base/utf8.h"
#include "read/headers/picture.h"

namespace kolum::tags {

using media::MusicBrainzIds;
using media::ReplayGain;
using media::SongTags;

enum class SongTagBuilder::Special {
  kTrack,
  kTrackTotal,
  kDisc,
  kDiscTotal,
  kGenre,
  kCredited,
  kAllArtists,
  kLyrics,
  kTempo,
  kTrackLoudness,
  kAlbumLoudness,
  kRating,
  kWindowsRating,
  kFractionRating,
  kItunesLoudness,
  kAcoustId,
};

struct SongTagBuilder::Setter {
  struct Date {
    std::string SongTags::*field;
  };
  struct Role {
    std::string_view name;
  };
  using Target =
      std::variant<std::string SongTags::*, std::vector<std::string> SongTags::*,
                   std::string MusicBrainzIds::*, std::vector<std::string> MusicBrainzIds::*,
                   std::optional<double> ReplayGain::*, std::optional<bool> SongTags::*, Date, Role,
                   Special>;
  std::string_view name;
  Target target;

  static const Setter* find(std::string_view name);
};

namespace {

constexpr std::size_t kLongestName = 64;

template <typename Number>
std::optional<Number> leadingNumber(std::string_view& text) {
  while (text.starts_with(' ') || text.starts_with('+')) text.remove_prefix(1);
  Number value = {};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc()) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return value;
}

// Some writers use the decimal comma of their country.
std::optional<double> decimal(std::string_view text) {
  std::string number(text.substr(0, kLongestName));
  std::ranges::replace(number, ',', '.');
  std::string_view rest = number;
  const auto value = leadingNumber<double>(rest);
  return value && std::isfinite(*value) ? value : std::nullopt;
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// The number that COUNT digits are; empty if they are not digits.
std::optional<int> digits(std::string_view text, std::size_t count) {
  if (text.size() < count || !std::all_of(text.begin(), text.begin() + count, isDigit))
    return std::nullopt;
  int value = 0;
  for (const char c : text.substr(0, count)) value = value * 10 + (c - '0');
  return value;
}

// A part of a date behind the ones before it.
struct DatePart {
  std::string_view separators;
  char separator;  // as it is written in the result
  int least;
  int most;
};

constexpr auto kDateParts = std::to_array<DatePart>({
    {"-/.:", '-', 1, 12},
    {"-/.:", '-', 1, 31},
    {"T ", 'T', 0, 23},
    {":", ':', 0, 59},
    {":", ':', 0, 60},
});

// The part of a date that makes sense; empty if there is none.
std::string isoDate(std::string_view text) {
  constexpr std::size_t kYearDigits = 4;
  constexpr std::size_t kHours = 2;
  while (text.starts_with(' ')) text.remove_prefix(1);
  const auto year = digits(text, kYearDigits);
  if (!year || *year == 0) return {};
  std::string date(text.substr(0, kYearDigits));
  text.remove_prefix(kYearDigits);
  // "19991231"
  const bool isCompact = digits(text, 4) && (text.size() == 4 || !isDigit(text[4]));
  std::string onlyHours;
  for (std::size_t i = 0; i < kDateParts.size(); ++i) {
    const DatePart& part = kDateParts[i];
    if (!isCompact || i >= kHours) {
      if (text.empty() || part.separators.find(text.front()) == part.separators.npos) break;
      text.remove_prefix(1);
    }
    const auto value = digits(text, 2);
    if (!value || *value < part.least || *value > part.most) break;
    std::string& to = i == kHours ? onlyHours : date;
    // Hours alone are no time.
    if (i == kHours + 1) date += onlyHours;
    to += part.separator;
    to += text.substr(0, 2);
    text.remove_prefix(2);
  }
  return date;
}

// Seconds of "01:02:03.456".
std::optional<double> clockTime(std::string_view text) {
  constexpr unsigned kMostHours = 10'000;
  constexpr std::size_t kMinutes = 1;
  constexpr std::size_t kSeconds = 4;
  constexpr double kLongestMinute = 61;
  const auto hours = leadingNumber<unsigned>(text);
  if (!hours || *hours > kMostHours || text.size() <= kSeconds) return std::nullopt;
  const auto minutes = digits(text.substr(kMinutes), 2);
  const double seconds = decimal(text.substr(kSeconds)).value_or(-1);
  if (!minutes || seconds < 0 || seconds >= kLongestMinute) return std::nullopt;
  return *hours * 3600.0 + *minutes * 60.0 + seconds;
}

std::string lowered(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), lowerCase);
  return lower;
}

bool isUuid(std::string_view text) {
  constexpr std::string_view kForm = "00000000-0000-0000-0000-000000000000";
  return std::equal(text.begin(), text.end(), kForm.begin(), kForm.end(), [](char c, char form) {
    return form == '-' ? c == '-' : isDigit(c) || (c >= 'a' && c <= 'f');
  });
}

// Each that a text consists of; older versions of ID3v2 put several into one.
template <typename Use>
void forEachUuid(std::string_view text, Use use) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("/;, "), text.size());
    if (const std::string id = lowered(text.substr(0, end)); isUuid(id)) use(id);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

std::string normalized(std::string_view name) {
  constexpr std::string_view kIgnored = " _-/:.";
  std::string normal;
  for (const char c : name.substr(0, kLongestName)) {
    if (kIgnored.find(c) != kIgnored.npos) continue;
    normal += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  }
  return normal;
}

// What is not UTF-8 becomes U+FFFD. The end of a text that is too long is cut off.
std::string cleaned(std::string_view text) {
  std::string clean;
  while (!text.empty()) {
    const std::size_t length = firstUtf8Character(text).length;
    const std::string_view character = length > 0 ? text.substr(0, length) : "\xEF\xBF\xBD";
    if (clean.size() + character.size() > media::kLongestTagText) break;
    clean += character;
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return clean;
}

bool isBlank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == text.npos;
}

void append(std::string& text, char32_t c) {
  if (c < 0x80) {
    text += static_cast<char>(c);
  } else if (c < 0x800) {
    text += static_cast<char>(0xC0 | c >> 6);
    text += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    text += static_cast<char>(0xE0 | c >> 12);
    text += static_cast<char>(0x80 | (c >> 6 & 0x3F));
    text += static_cast<char>(0x80 | (c & 0x3F));
  }
}

// What Windows-1252 has where Latin-1 has control characters, which no tag contains.
constexpr std::array<char16_t, 32> kWindows1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

std::string_view mimeTypeOf(headers::PictureFormat format) {
  switch (format) {
    case headers::PictureFormat::kPng:
      return "image/png";
    case headers::PictureFormat::kJpeg:
      return "image/jpeg";
    case headers::PictureFormat::kGif:
      return "image/gif";
    case headers::PictureFormat::kBmp:
      return "image/bmp";
    case headers::PictureFormat::kTiff:
      return "image/tiff";
    case headers::PictureFormat::kWebp:
      return "image/webp";
  }
  return {};
}

// The name of a genre's number in ID3v1, which is empty for some; no value if it is no number.
std::optional<std::string> genreOf(std::string_view number) {
  const auto value = leadingNumber<int>(number);
  if (!value || *value < 0 || *value > UINT8_MAX || !number.empty()) return std::nullopt;
  return TagLib::ID3v1::genre(*value).to8Bit(true);
}

}  // namespace

std::string utf8Of(std::string_view bytes) {
  if (isUtf8(bytes)) return std::string(bytes);
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    append(text, byte >= 0x80 && byte < 0xA0 ? kWindows1252[byte - 0x80] : char32_t{byte});
  }
  return text;
}

// Names without case, spaces and punctuation: the same for Vorbis comments, APE items, and the
// free names of ID3v2, MP4 and ASF, which also all have their own for some (in the readers).
const SongTagBuilder::Setter* SongTagBuilder::Setter::find(std::string_view name) {
  static constexpr auto kRows = std::to_array<Setter>({
      {"TITLE", &SongTags::title},
      {"ALBUM", &SongTags::album},
      {"ARTIST", &SongTags::artists},
      {"ARTISTS", Special::kAllArtists},
      {"ALBUMARTIST", &SongTags::albumArtists},
      {"COMPOSER", &SongTags::composers},
      {"CONDUCTOR", &SongTags::conductors},
      {"LYRICIST", &SongTags::lyricists},
      {"WRITER", Role{"writer"}},
      {"PERFORMER", Special::kCredited},
      {"REMIXER", Role{"remixer"}},
      {"MIXARTIST", Role{"remixer"}},
      {"ARRANGER", Role{"arranger"}},
      {"PRODUCER", Role{"producer"}},
      {"ENGINEER", Role{"engineer"}},
      {"MIXER", Role{"mixer"}},
      {"DJMIXER", Role{"DJ mixer"}},
      {"DIRECTOR", Role{"director"}},
      {"NARRATOR", Role{"narrator"}},
      {"ENSEMBLE", Role{"ensemble"}},
      {"GENRE", Special::kGenre},
      {"TITLESORT", &SongTags::titleSort},
      {"ALBUMSORT", &SongTags::albumSort},
      {"ARTISTSORT", &SongTags::artistSorts},
      {"ALBUMARTISTSORT", &SongTags::albumArtistSorts},
      {"COMPOSERSORT", &SongTags::composerSorts},
      {"TRACKNUMBER", Special::kTrack},
      {"TRACK", Special::kTrack},
      {"TRACKTOTAL", Special::kTrackTotal},
      {"TOTALTRACKS", Special::kTrackTotal},
      {"TRACKC", Special::kTrackTotal},
      {"DISCNUMBER", Special::kDisc},
      {"DISC", Special::kDisc},
      {"DISK", Special::kDisc},
      {"DISCTOTAL", Special::kDiscTotal},
      {"TOTALDISCS", Special::kDiscTotal},
      {"DISCC", Special::kDiscTotal},
      {"DATE", Date{&SongTags::date}},
      {"YEAR", Date{&SongTags::date}},
      {"ORIGINALDATE", Date{&SongTags::originalDate}},
      {"ORIGINALYEAR", Date{&SongTags::originalDate}},
      {"ORIGYEAR", Date{&SongTags::originalDate}},
      {"RELEASEDATE", Date{&SongTags::releaseDate}},
      {"COMMENT", &SongTags::comments},
      {"DESCRIPTION", &SongTags::comments},
      {"LYRICS", Special::kLyrics},
      {"UNSYNCEDLYRICS", Special::kLyrics},
      {"SYNCEDLYRICS", Special::kLyrics},
      {"LANGUAGE", &SongTags::languages},
      {"MUSICBRAINZTRACKID", &MusicBrainzIds::recording},
      {"MUSICBRAINZRECORDINGID", &MusicBrainzIds::recording},
      {"MUSICBRAINZRELEASETRACKID", &MusicBrainzIds::track},
      {"MUSICBRAINZALBUMID", &MusicBrainzIds::release},
      {"MUSICBRAINZRELEASEGROUPID", &MusicBrainzIds::releaseGroup},
      {"MUSICBRAINZWORKID", &MusicBrainzIds::work},
      {"MUSICBRAINZARTISTID", &MusicBrainzIds::artists},
      {"MUSICBRAINZALBUMARTISTID", &MusicBrainzIds::albumArtists},
      {"ACOUSTIDID", Special::kAcoustId},
      {"ISRC", &SongTags::isrcs},
      {"LABEL", &SongTags::labels},
      {"PUBLISHER", &SongTags::labels},
      {"ORGANIZATION", &SongTags::labels},
      {"CATALOGNUMBER", &SongTags::catalogNumbers},
      {"LABELNO", &SongTags::catalogNumbers},
      {"BARCODE", &SongTags::barcode},
      {"UPC", &SongTags::barcode},
      {"EAN", &SongTags::barcode},
      {"COPYRIGHT", &SongTags::copyright},
      {"ENCODER", &SongTags::encoder},
      {"ENCODERSETTINGS", &SongTags::encoder},
      {"ENCODEDBY", &SongTags::encodedBy},
      {"BPM", Special::kTempo},
      {"TEMPO", Special::kTempo},
      {"KEY", &SongTags::key},
      {"INITIALKEY", &SongTags::key},
      {"MOOD", &SongTags::moods},
      {"REPLAYGAINTRACKGAIN", &ReplayGain::trackGain},
      {"REPLAYGAINTRACKPEAK", &ReplayGain::trackPeak},
      {"REPLAYGAINALBUMGAIN", &ReplayGain::albumGain},
      {"REPLAYGAINALBUMPEAK", &ReplayGain::albumPeak},
      {"R128TRACKGAIN", Special::kTrackLoudness},
      {"R128ALBUMGAIN", Special::kAlbumLoudness},
      {"ITUNNORM", Special::kItunesLoudness},
      {"RATING", Special::kRating},
      {"FMPSRATING", Special::kFractionRating},
      {"WINDOWSRATING", Special::kWindowsRating},
      {"COMPILATION", &SongTags::isCompilation},
      {"ITUNESCOMPILATION", &SongTags::isCompilation},
      {"GAPLESSPLAYBACK", &SongTags::isGapless},
      {"ITUNESGAPLESS", &SongTags::isGapless},
      {"ITUNPGAP", &SongTags::isGapless},
      {"PODCAST", &SongTags::isPodcast},
      {"ITUNESPODCAST", &SongTags::isPodcast},
  });
  const auto row = std::ranges::find(kRows, name, &Setter::name);
  return row != kRows.end() ? &*row : nullptr;
}

void SongTagBuilder::add(std::string_view name, std::string_view value) {
  const std::string normal = normalized(name);
  const Setter* setter = Setter::find(normal);
  const auto addOne = [&](std::string_view one) {
    if (setter == nullptr) {
      addChapterText(normal, one);
      return;
    }
    const std::string text = cleaned(one);
    const auto put = [&](auto target) {
      using Target = decltype(target);
      if constexpr (std::is_same_v<Target, Special>)
        addSpecial(target, text);
      else if constexpr (std::is_same_v<Target, Setter::Date>)
        addDate(tags_.*target.field, text);
      else if constexpr (std::is_same_v<Target, Setter::Role>)
        addPerformer(text, target.name);
      else if constexpr (std::is_same_v<Target, std::optional<double> ReplayGain::*>)
        addGainText(target, text);
      else if constexpr (std::is_same_v<Target, std::optional<bool> SongTags::*>)
        addFlag(tags_.*target, text);
      else if constexpr (std::is_same_v<Target, std::string MusicBrainzIds::*> ||
                         std::is_same_v<Target, std::vector<std::string> MusicBrainzIds::*>)
        forEachUuid(text, [&](const std::string& id) { addTo(tags_.musicBrainz.*target, id); });
      else
        addTo(tags_.*target, text);
    };
    std::visit(put, setter->target);
  };
  for (std::size_t values = 0; values < media::kMostTagValues && !value.empty(); ++values) {
    const std::size_t end = std::min(value.find('\0'), value.size());
    if (const std::string_view one = value.substr(0, end); !isBlank(one)) addOne(one);
    value.remove_prefix(std::min(end + 1, value.size()));
  }
}

// Lists are filled by one tag only.
bool SongTagBuilder::owns(const void* list) {
  const auto owner = std::ranges::find(owners_, list, &std::pair<const void*, int>::first);
  if (owner != owners_.end()) return owner->second == tag_;
  owners_.emplace_back(list, tag_);
  return true;
}

void SongTagBuilder::addTo(std::string& field, std::string_view text) {
  if (!field.empty() || text.empty()) return;
  field = text;
  isEmpty_ = false;
}

void SongTagBuilder::addTo(std::vector<std::string>& field, std::string_view text) {
  if (text.empty() || !owns(&field) || field.size() >= media::kMostTagValues ||
      std::ranges::find(field, text) != field.end())
    return;
  field.emplace_back(text);
  isEmpty_ = false;
}

void SongTagBuilder::addSpecial(Special what, std::string_view text) {
  constexpr double kSteps = 256;       // per decibel
  constexpr double kToReplayGain = 5;  // from -23 LUFS to -18 LUFS
  constexpr double kFastest = 1000;
  const auto addLoudness = [&](std::optional<double> ReplayGain::*field) {
    if (const auto steps = decimal(text)) addGain(field, *steps / kSteps + kToReplayGain);
  };
  switch (what) {
    case Special::kTrack:
      return addPosition(tags_.track, tags_.trackTotal, text);
    case Special::kTrackTotal:
      return addCount(tags_.trackTotal, text);
    case Special::kDisc:
      return addPosition(tags_.disc, tags_.discTotal, text);
    case Special::kDiscTotal:
      return addCount(tags_.discTotal, text);
    case Special::kGenre:
      return addGenre(text);
    case Special::kCredited:
      return addCredited(text);
    case Special::kAllArtists:
      return addTo(allArtists_, text);
    case Special::kLyrics:
      return addLyrics("");
    case Special::kTempo:
      if (const auto beats = decimal(text);
          beats && *beats > 0 && *beats <= kFastest && !tags_.beatsPerMinute) {
        tags_.beatsPerMinute = beats;
        isEmpty_ = false;
      }
      return;
    case Special::kTrackLoudness:
      return addLoudness(&ReplayGain::trackGain);
    case Special::kAlbumLoudness:
      return addLoudness(&ReplayGain::albumGain);
    case Special::kRating: {
      constexpr double kStars = 5;
      constexpr double kStar = 20;
      if (const auto value = decimal(text)) addRating(*value <= kStars ? *value * kStar : *value);
      return;
    }
    case Special::kWindowsRating: {
      // From the first to the fifth star: 1, 25, 50, 75, 99.
      constexpr double kQuarter = 25;
      if (const auto value = decimal(text); value && *value > 0)
        addRating((1 + std::round(*value / kQuarter)) * 20);
      return;
    }
    case Special::kFractionRating:
      if (const auto value = decimal(text)) addRating(*value * 100);
      return;
    case Special::kItunesLoudness:
      return addItunesLoudness(text);
    case Special::kAcoustId:
      return forEachUuid(text, [&](const std::string& id) { addTo(tags_.acoustId, id); });
  }
}

// "3", "3/12"
void SongTagBuilder::addPosition(std::optional<int>& number, std::optional<int>& total,
                                 std::string_view text) {
  addCount(number, text);
  const std::size_t slash = text.find('/');
  if (slash != text.npos) addCount(total, text.substr(slash + 1));
}

void SongTagBuilder::addCount(std::optional<int>& field, std::string_view text) {
  const auto value = leadingNumber<int>(text);
  if (field || !value || *value < 1 || *value > UINT16_MAX) return;
  field = value;
  isEmpty_ = false;
}

void SongTagBuilder::addDate(std::string& field, std::string_view text) {
  // Some tags have the year and the date under two names.
  const std::string date = isoDate(text);
  if (date.size() > field.size() && date.starts_with(field) && owns(&field)) {
    field = date;
    isEmpty_ = false;
  }
}

// "Rock", "17", "(17)", "(17)Rock", "(17)(31)Other", "((not a number)"
void SongTagBuilder::addGenre(std::string_view text) {
  constexpr std::string_view kEscape = "((";
  while (text.starts_with('(') && !text.starts_with(kEscape)) {
    const std::size_t end = text.find(')');
    if (end == text.npos) break;
    const std::string_view inside = text.substr(1, end - 1);
    const auto name = inside == "RX"   ? std::optional<std::string>("Remix")
                      : inside == "CR" ? std::optional<std::string>("Cover")
                                       : genreOf(inside);
    if (!name) break;
    addTo(tags_.genres, *name);
    text.remove_prefix(end + 1);
  }
  if (text.starts_with(kEscape)) text.remove_prefix(1);
  addTo(tags_.genres, genreOf(text).value_or(std::string(text)));
}

// "Name", "Name (role)"
void SongTagBuilder::addCredited(std::string_view text) {
  const std::size_t begin = text.rfind(" (");
  if (begin == text.npos || begin == 0 || !text.ends_with(')')) return addPerformer(text, "");
  const std::size_t role = begin + 2;
  addPerformer(text.substr(0, begin), text.substr(role, text.size() - 1 - role));
}

void SongTagBuilder::addGainText(std::optional<double> ReplayGain::*field, std::string_view text) {
  if (const auto value = decimal(text)) addGain(field, *value);
}

void SongTagBuilder::addGain(std::optional<double> ReplayGain::*field, double value) {
  constexpr double kLargestGain = 100;
  constexpr double kLargestPeak = 1000;
  const bool isPeak = field == &ReplayGain::trackPeak || field == &ReplayGain::albumPeak;
  const bool isSound =
      isPeak ? value >= 0 && value <= kLargestPeak : std::abs(value) <= kLargestGain;
  if (!isSound || tags_.replayGain.*field) return;
  tags_.replayGain.*field = value;
  isEmpty_ = false;
}

// The first two numbers are the loudness of both channels, in thousandths of the wanted power.
void SongTagBuilder::addItunesLoudness(std::string_view numbers) {
  constexpr int kHexadecimal = 16;
  constexpr double kWanted = 1000;
  std::uint32_t loudest = 0;
  for (int channel = 0; channel < 2; ++channel) {
    while (numbers.starts_with(' ')) numbers.remove_prefix(1);
    std::uint32_t value = 0;
    const auto [end, error] =
        std::from_chars(numbers.data(), numbers.data() + numbers.size(), value, kHexadecimal);
    if (error != std::errc()) return;
    loudest = std::max(loudest, value);
    numbers.remove_prefix(static_cast<std::size_t>(end - numbers.data()));
  }
  if (loudest > 0 && !itunesGain_) itunesGain_ = -10 * std::log10(loudest / kWanted);
}

void SongTagBuilder::addRating(double value) {
  constexpr double kBest = 100;
  if (tags_.rating || !(value >= 0 && value <= kBest)) return;
  tags_.rating = static_cast<int>(std::lround(value));
  isEmpty_ = false;
}

void SongTagBuilder::addPopularity(int value) {
  // The steps between the values that are written for stars: 1, 64, 128, 196, 255.
  constexpr auto kSteps = std::to_array<int>({1, 32, 96, 160, 224});
  if (value > 0)
    addRating(20.0 * static_cast<double>(std::ranges::upper_bound(kSteps, value) - kSteps.begin()));
}

void SongTagBuilder::addFlag(std::optional<bool>& field, std::string_view text) {
  const bool isSet = text == "1" || equalsIgnoringCase(text, "true");
  if (field || !(isSet || text == "0" || equalsIgnoringCase(text, "false"))) return;
  field = isSet;
  isEmpty_ = false;
}

void SongTagBuilder::addLyrics(std::string_view language) {
  const std::string text = cleaned(language.substr(0, language.find('\0')));
  const bool isStated =
      !isBlank(text) && !equalsIgnoringCase(text, "XXX") && !equalsIgnoringCase(text, "und");
  if (isStated && tags_.lyricsLanguage.empty()) tags_.lyricsLanguage = text;
  tags_.hasLyrics = true;
  isEmpty_ = false;
}

void SongTagBuilder::addPerformer(std::string_view name, std::string_view role) {
  media::Performer performer = {.name = cleaned(name.substr(0, name.find('\0'))),
                                .role = cleaned(role.substr(0, role.find('\0')))};
  const auto isSame = [&](const media::Performer& other) {
    return other.name == performer.name && other.role == performer.role;
  };
  if (isBlank(performer.name) || !owns(&tags_.performers) ||
      tags_.performers.size() >= media::kMostTagValues ||
      std::ranges::any_of(tags_.performers, isSame))
    return;
  tags_.performers.push_back(std::move(performer));
  isEmpty_ = false;
}

void SongTagBuilder::addCover(std::string_view mimeType, std::string_view type,
                              std::string_view description, std::span<const std::uint8_t> head,
                              std::uint64_t bytes) {
  // Instead of a picture there may be an address.
  constexpr std::string_view kAddress = "-->";
  if (bytes == 0 || bytes > INT64_MAX || mimeType == kAddress || !owns(&tags_.covers) ||
      tags_.covers.size() >= media::kMostTagValues)
    return;
  media::Cover& cover = tags_.covers.emplace_back();
  const auto picture = headers::readPicture(head, static_cast<std::int64_t>(bytes));
  if (picture) {
    cover.width = picture->width;
    cover.height = picture->height;
    mimeType = mimeTypeOf(picture->format);
  }
  cover.mimeType = cleaned(mimeType.substr(0, mimeType.find('\0')));
  cover.type = type;
  cover.description = cleaned(description.substr(0, description.find('\0')));
  cover.bytes = bytes;
  isEmpty_ = false;
}

void SongTagBuilder::addChapter(double start, std::optional<double> end, std::string_view title) {
  if (!owns(&tags_.chapters) || tags_.chapters.size() >= media::kMostTagValues) return;
  if (end && *end < start) end.reset();
  tags_.chapters.push_back(
      {.start = start, .end = end, .title = cleaned(title.substr(0, title.find('\0')))});
  isEmpty_ = false;
}

// "CHAPTER001" with its start as value, "CHAPTER001NAME" with its title.
bool SongTagBuilder::addChapterText(std::string_view name, std::string_view text) {
  constexpr std::string_view kPrefix = "CHAPTER";
  constexpr std::size_t kDigits = 3;
  if (!name.starts_with(kPrefix)) return false;
  name.remove_prefix(kPrefix.size());
  const auto number = digits(name, kDigits);
  if (!number ||
      (namedChapters_.size() >= media::kMostTagValues && !namedChapters_.contains(*number)))
    return false;
  name.remove_prefix(kDigits);
  if (name == "NAME") namedChapters_[*number].second = text;
  if (!name.empty()) return true;
  if (const auto start = clockTime(text)) namedChapters_[*number].first = start;
  return true;
}

std::optional<SongTags> SongTagBuilder::take() && {
  for (const auto& [number, chapter] : namedChapters_)
    if (chapter.first) addChapter(*chapter.first, std::nullopt, chapter.second);
  std::ranges::stable_sort(tags_.chapters, {}, &media::SongChapter::start);
  // The first name is then a text for people: "One feat. Two".
  if (tags_.artists.size() <= 1 && !allArtists_.empty()) tags_.artists = std::move(allArtists_);
  if (itunesGain_) addGain(&ReplayGain::trackGain, *itunesGain_);
  if (isEmpty_) return std::nullopt;
  return std::move(tags_);
}

}  // namespace kolum::tags
