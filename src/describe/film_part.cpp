#include <array>
#include <cstdio>

#include "describe/parts.h"
#include "describe/table.h"
#include "describe/text_lists.h"
#include "media/film_tags.h"

namespace kolum::describe {

namespace {

using media::FilmTags;

constexpr const char* kTag = "the container's tags";

// "2015-06-07T08:09:10.5+02:00", as far as known.
Value dateText(const std::optional<media::FilmDate>& date) {
  if (!date) return nullptr;
  std::array<char, 64> part = {};
  std::string text;
  const auto append = [&](const char* format, auto... values) {
    text.append(part.data(), static_cast<std::size_t>(
                                 std::snprintf(part.data(), part.size(), format, values...)));
  };
  append("%04d", date->year);
  if (date->month) append("-%02d", *date->month);
  if (date->day) append("-%02d", *date->day);
  if (!date->time) return text;
  append("T%02d:%02d:%02d", date->time->hour, date->time->minute, date->time->second);
  if (date->time->millisecond != 0) append(".%03d", date->time->millisecond);
  if (!date->offset) return text;
  if (*date->offset == 0) return text + "Z";
  const int minutes = *date->offset < 0 ? -*date->offset : *date->offset;
  append("%c%02d:%02d", *date->offset < 0 ? '-' : '+', minutes / 60, minutes % 60);
  return text;
}

// In the order of the enumeration.
constexpr const char* kCertainties[] = {"explicit", "utc", "local"};

Value certainty(const std::optional<media::FilmDate>& date) {
  if (!date || !date->time) return nullptr;
  return kCertainties[static_cast<std::size_t>(date->certainty)];
}

struct Camera {
  std::string make;
  std::string model;
};

constexpr auto kCameraRows = std::to_array<Row<Camera>>({
    {{"make", Type::kText, Unit::kNone, "Maker", kTag},
     [](const Camera& c) { return text(c.make); }},
    {{"model", Type::kText, Unit::kNone, "Model", kTag},
     [](const Camera& c) { return text(c.model); }},
});
constexpr auto kCameraKeys = keysOf(kCameraRows);

constexpr auto kPositionRows = std::to_array<Row<media::FilmPosition>>({
    {{"latitude", Type::kNumber, Unit::kDegrees, "North positive", kTag},
     [](const media::FilmPosition& p) -> Value { return p.latitude; }},
    {{"longitude", Type::kNumber, Unit::kDegrees, "East positive", kTag},
     [](const media::FilmPosition& p) -> Value { return p.longitude; }},
    {{"altitude", Type::kNumber, Unit::kMetres, "Above the sea", kTag},
     [](const media::FilmPosition& p) { return known(p.altitude); }},
});
constexpr auto kPositionKeys = keysOf(kPositionRows);

constexpr auto kRows =
    std::to_array<Row<FilmTags>>({
        {{"title", Type::kText, Unit::kNone, "Title", kTag},
         [](const FilmTags& t) { return text(t.title); }},
        {{"artist", Type::kText, Unit::kNone, "Artist; several are joined by \"; \"", kTag},
         [](const FilmTags& t) { return joinedTexts(t.artists); }},
        {{"artists", Type::kTexts, Unit::kNone, "Artists, if there are several", kTag},
         [](const FilmTags& t) { return severalTexts(t.artists); }},
        {{"show", Type::kText, Unit::kNone, "The series", kTag},
         [](const FilmTags& t) { return text(t.show); }},
        {{"season", Type::kInteger, Unit::kCount, "0 has the specials", kTag},
         [](const FilmTags& t) { return known(t.season); }},
        {{"episode", Type::kInteger, Unit::kCount, "Number of the episode", kTag},
         [](const FilmTags& t) { return known(t.episode); }},
        {{"episodeId", Type::kText, Unit::kNone, "As stored: \"S01E02\"", kTag},
         [](const FilmTags& t) { return text(t.episodeId); }},
        {{"network", Type::kText, Unit::kNone, "That broadcast it", kTag},
         [](const FilmTags& t) { return text(t.network); }},
        {{"genre", Type::kText, Unit::kNone, "Genre, as artist", kTag},
         [](const FilmTags& t) { return joinedTexts(t.genres); }},
        {{"genres", Type::kTexts, Unit::kNone, "If there are several", kTag},
         [](const FilmTags& t) { return severalTexts(t.genres); }},
        {{"description", Type::kText, Unit::kNone, "Short", kTag},
         [](const FilmTags& t) { return text(t.description); }},
        {{"synopsis", Type::kText, Unit::kNone, "Long", kTag},
         [](const FilmTags& t) { return text(t.synopsis); }},
        {{"comment", Type::kText, Unit::kNone, "Comment", kTag},
         [](const FilmTags& t) { return text(t.comment); }},
        {{"copyright", Type::kText, Unit::kNone, "Copyright", kTag},
         [](const FilmTags& t) { return text(t.copyright); }},
        {{"directors", Type::kTexts, Unit::kNone, "Directors", kTag},
         [](const FilmTags& t) { return texts(t.directors); }},
        {{"actors", Type::kTexts, Unit::kNone, "Actors", kTag},
         [](const FilmTags& t) { return texts(t.actors); }},
        {{"year", Type::kInteger, Unit::kNone, "Year of the date", kTag},
         [](const FilmTags& t) { return t.date ? Value(t.date->year) : Value(); }},
        {{"date", Type::kText, Unit::kMoment, "As tagged; of films mostly the release", kTag},
         [](const FilmTags& t) { return dateText(t.date); }},
        {{"created", Type::kText, Unit::kMoment, "When it was filmed, or the file made", kTag},
         [](const FilmTags& t) { return dateText(t.created); }},
        {{"createdZone", Type::kText, Unit::kNone,
          "How sure that moment is: \"explicit\" (its offset is stated), \"utc\" (by the "
          "container's "
          "definition) or \"local\" (nothing says where)",
          kTag},
         [](const FilmTags& t) { return certainty(t.created); }},
        {{"camera", Type::kObject, Unit::kNone, "Camera", kTag, kCameraKeys},
         [](const FilmTags& t) {
           return objectOf(kCameraRows, Camera{t.make, t.model});
         }},
        {{"software", Type::kText, Unit::kNone, "In the camera, or that edited the film", kTag},
         [](const FilmTags& t) { return text(t.software); }},
        {{"androidVersion", Type::kText, Unit::kNone, "Of the phone", kTag},
         [](const FilmTags& t) { return text(t.androidVersion); }},
        {{"position", Type::kObject, Unit::kNone, "Where", kTag, kPositionKeys},
         [](const FilmTags& t) {
           return t.position ? objectOf(kPositionRows, *t.position) : Value();
         }},
        {{"placeName", Type::kText, Unit::kNone, "Where, in words", kTag},
         [](const FilmTags& t) { return text(t.placeName); }},
        {{"contentIdentifier", Type::kText, Unit::kNone, "Equal in a live photo's picture and film",
          kTag},
         [](const FilmTags& t) { return text(t.contentIdentifier); }},
        {{"livePhoto", Type::kBoolean, Unit::kNone, "Whether it is the film of one", kTag},
         [](const FilmTags& t) { return ifTrue(t.isLivePhoto); }},
        {{"encoder", Type::kText, Unit::kNone, "The program that wrote the container", kTag},
         [](const FilmTags& t) { return text(t.encoder); }},
    });
constexpr auto kKeys = keysOf(kRows);

}  // namespace

Part filmPart() {
  return {{"films", "Films", kKeys}, [](Value& object, const Document& document) {
            const auto& container = document.found.container;
            if (document.video && container && document.hasDetails)
              add(object, kRows, media::filmTagsOf(*container));
          }};
}

}  // namespace kolum::describe
