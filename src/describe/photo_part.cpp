#include <cstdlib>
#include <string>
#include <utility>

#include "artwork/cover.h"
#include "describe/parts.h"
#include "describe/table.h"
#include "media/pixel_formats.h"

namespace kolum::describe {

namespace {

constexpr auto kPhotoRows = std::to_array<Row<Document>>({
    {{"pictureFormat", Type::kInteger, Unit::kNone, "What a photo's extension implies", "the name"},
     [](const Document& d) { return d.type != nullptr ? Value(d.type->formatIds) : Value(); }},
    {{"width", Type::kInteger, Unit::kPixels, "As stored", "the picture"},
     [](const Document& d) { return positive(d.photo->width); }},
    {{"height", Type::kInteger, Unit::kPixels, "As stored", "the picture"},
     [](const Document& d) { return positive(d.photo->height); }},
    {{"pixelFormat", Type::kInteger, Unit::kNone,
      "The pixel format's number in FFmpeg 57, whatever release is linked; left out for a later "
      "format",
      "the picture"},
     [](const Document& d) -> Value {
       if (d.photo->pixelFormat == media::kUnknownPixelFormat) return nullptr;
       return d.photo->pixelFormat;
     }},
    {{"pixelFormatName", Type::kText, Unit::kNone,
      "FFmpeg's name of the pixel format, such as \"yuv420p\"", "the picture"},
     [](const Document& d) { return text(d.photo->pixelFormatName); }},
    {{"isAlbumCover", Type::kBoolean, Unit::kNone,
      "Whether a photo's name is that of an album picture", "the name"},
     [](const Document& d) -> Value { return artwork::isCoverName(d.path.name); }},
});

constexpr auto kPhotoKeys = keysOf(kPhotoRows);

using media::PhotoTags;

constexpr const char* kExif = "Exif";
constexpr const char* kWords = "XMP, IPTC or Exif";

std::string twoDigits(int number) {
  return std::string(number < 10 ? "0" : "") + std::to_string(number);
}

// "2015-06-07T08:09:10.25+02:00", as far as known.
Value timeText(const std::optional<media::PhotoTime>& time) {
  if (!time) return nullptr;
  std::string text = std::to_string(time->year);
  text.insert(0, text.size() < 4 ? 4 - text.size() : 0, '0');
  if (time->month == 0) return text;
  text += "-" + twoDigits(time->month);
  if (time->day == 0) return text;
  text += "-" + twoDigits(time->day);
  if (!time->hasTimeOfDay) return text;
  text +=
      "T" + twoDigits(time->hour) + ":" + twoDigits(time->minute) + ":" + twoDigits(time->second);
  if (!time->subSecond.empty()) text += "." + time->subSecond;
  if (!time->offset) return text;
  const int minutes = std::abs(*time->offset);
  if (minutes == 0) return text + "Z";
  return text + (*time->offset < 0 ? "-" : "+") + twoDigits(minutes / 60) + ":" +
         twoDigits(minutes % 60);
}

// In the order of the enumerations.
constexpr const char* kOffsetOrigins[] = {"none", "stated", "other time", "maker note", "GPS"};
constexpr const char* kPrograms[] = {"manual",   "normal", "aperture priority", "shutter priority",
                                     "creative", "action", "portrait",          "landscape"};
constexpr const char* kMeterings[] = {"average", "centre-weighted", "spot", "multi-spot",
                                      "pattern", "partial",         "other"};
constexpr const char* kWhiteBalances[] = {"automatic", "manual"};
constexpr const char* kNorths[] = {"", "true", "magnetic"};

template <typename Enum, std::size_t kSize>
Value nameOf(const std::optional<Enum>& value, const char* const (&names)[kSize]) {
  const auto index = value ? static_cast<std::size_t>(*value) : kSize;
  return index < kSize ? text(names[index]) : Value();
}

Value offsetOrigin(const std::optional<media::PhotoTime>& time) {
  if (!time || time->offsetOrigin == media::OffsetOrigin::kNone) return nullptr;
  return nameOf(std::optional(time->offsetOrigin), kOffsetOrigins);
}

Value quotient(const std::optional<media::Rational>& value) {
  if (!value || value->den == 0) return nullptr;
  return static_cast<double>(value->num) / value->den;
}

struct Device {
  std::string make;
  std::string model;
  std::string serial;
};

constexpr auto kDeviceRows = std::to_array<Row<Device>>({
    {{"make", Type::kText, Unit::kNone, "Maker", kExif},
     [](const Device& d) { return text(d.make); }},
    {{"model", Type::kText, Unit::kNone, "Model, without the maker", kExif},
     [](const Device& d) { return text(d.model); }},
    {{"serial", Type::kText, Unit::kNone, "Serial number", kExif},
     [](const Device& d) { return text(d.serial); }},
});
constexpr auto kDeviceKeys = keysOf(kDeviceRows);

constexpr auto kFlashRows = std::to_array<Row<media::Flash>>({
    {{"fired", Type::kBoolean, Unit::kNone, "Whether it fired", kExif},
     [](const media::Flash& flash) -> Value { return flash.hasFired; }},
    {{"value", Type::kInteger, Unit::kNone, "Exif's bits", kExif},
     [](const media::Flash& flash) -> Value { return flash.value; }},
});
constexpr auto kFlashKeys = keysOf(kFlashRows);

constexpr auto kPositionRows = std::to_array<Row<PhotoTags>>({
    {{"latitude", Type::kNumber, Unit::kDegrees, "North positive", kExif},
     [](const PhotoTags& t) { return t.position ? Value(t.position->latitude) : Value(); }},
    {{"longitude", Type::kNumber, Unit::kDegrees, "East positive", kExif},
     [](const PhotoTags& t) { return t.position ? Value(t.position->longitude) : Value(); }},
    {{"altitude", Type::kNumber, Unit::kMetres, "Above the sea", kExif},
     [](const PhotoTags& t) { return known(t.altitude); }},
    {{"accuracy", Type::kNumber, Unit::kMetres, "Possible error", kExif},
     [](const PhotoTags& t) { return known(t.positionAccuracy); }},
    {{"direction", Type::kNumber, Unit::kDegrees, "Of view, clockwise from north", kExif},
     [](const PhotoTags& t) { return t.direction ? Value(t.direction->degrees) : Value(); }},
    {{"north", Type::kText, Unit::kNone, "\"true\" or \"magnetic\"", kExif},
     [](const PhotoTags& t) -> Value {
       if (!t.direction) return nullptr;
       return nameOf(std::optional(t.direction->north), kNorths);
     }},
    {{"time", Type::kText, Unit::kMoment, "When it was measured", kExif},
     [](const PhotoTags& t) { return timeText(t.gpsTime); }},
});
constexpr auto kPositionKeys = keysOf(kPositionRows);

constexpr auto kAddressRows = std::to_array<Row<PhotoTags>>({
    {{"location", Type::kText, Unit::kNone, "Part of a city, or a place outside", kWords},
     [](const PhotoTags& t) { return text(t.location); }},
    {{"city", Type::kText, Unit::kNone, "City", kWords},
     [](const PhotoTags& t) { return text(t.city); }},
    {{"state", Type::kText, Unit::kNone, "State or province", kWords},
     [](const PhotoTags& t) { return text(t.state); }},
    {{"country", Type::kText, Unit::kNone, "Country", kWords},
     [](const PhotoTags& t) { return text(t.country); }},
    {{"countryCode", Type::kText, Unit::kNone, "As stored", kWords},
     [](const PhotoTags& t) { return text(t.countryCode); }},
});
constexpr auto kAddressKeys = keysOf(kAddressRows);

Value partOf(const media::Region& region, double media::Area::*part) {
  return region.area ? Value((*region.area).*part) : Value();
}

constexpr auto kRegionRows = std::to_array<Row<media::Region>>({
    {{"name", Type::kText, Unit::kNone, "Who or what", "XMP"},
     [](const media::Region& r) { return text(r.name); }},
    {{"type", Type::kText, Unit::kNone, "\"Face\", \"Pet\", ...", "XMP"},
     [](const media::Region& r) { return text(r.type); }},
    {{"centreX", Type::kNumber, Unit::kNone, "Part of the stored width", "XMP"},
     [](const media::Region& r) { return partOf(r, &media::Area::centreX); }},
    {{"centreY", Type::kNumber, Unit::kNone, "Part of the stored height", "XMP"},
     [](const media::Region& r) { return partOf(r, &media::Area::centreY); }},
    {{"width", Type::kNumber, Unit::kNone, "Part of the stored width", "XMP"},
     [](const media::Region& r) { return partOf(r, &media::Area::width); }},
    {{"height", Type::kNumber, Unit::kNone, "Part of the stored height", "XMP"},
     [](const media::Region& r) { return partOf(r, &media::Area::height); }},
});
constexpr auto kRegionKeys = keysOf(kRegionRows);

constexpr auto kTagRows = std::to_array<Row<PhotoTags>>({
    {{"taken", Type::kText, Unit::kMoment, "When, by the camera's clock", kExif},
     [](const PhotoTags& t) { return timeText(t.taken); }},
    {{"takenOffsetFrom", Type::kText, Unit::kNone,
      "Where the offset of that time comes from: \"stated\", \"other time\" (of this photo), "
      "\"maker note\" or \"GPS\"",
      kExif},
     [](const PhotoTags& t) { return offsetOrigin(t.taken); }},
    {{"digitized", Type::kText, Unit::kMoment, "When it became a file", kExif},
     [](const PhotoTags& t) { return timeText(t.digitized); }},
    {{"edited", Type::kText, Unit::kMoment, "When its content was last changed", kExif},
     [](const PhotoTags& t) { return timeText(t.modified); }},
    {{"camera", Type::kObject, Unit::kNone, "Camera", kExif, kDeviceKeys},
     [](const PhotoTags& t) {
       return objectOf(kDeviceRows, Device{t.make, t.model, t.serial});
     }},
    {{"lens", Type::kObject, Unit::kNone, "Lens", "Exif, maker notes", kDeviceKeys},
     [](const PhotoTags& t) {
       return objectOf(kDeviceRows, Device{t.lensMake, t.lensModel, t.lensSerial});
     }},
    {{"software", Type::kText, Unit::kNone, "In the camera, or that edited the photo", kExif},
     [](const PhotoTags& t) { return text(t.software); }},
    {{"exposureTime", Type::kNumber, Unit::kSeconds, "Exposure", kExif},
     [](const PhotoTags& t) { return quotient(t.exposureTime); }},
    {{"aperture", Type::kNumber, Unit::kNone, "f-number", kExif},
     [](const PhotoTags& t) { return known(t.aperture); }},
    {{"iso", Type::kInteger, Unit::kNone, "Sensitivity", kExif},
     [](const PhotoTags& t) { return known(t.iso); }},
    {{"exposureBias", Type::kNumber, Unit::kNone, "EV", kExif},
     [](const PhotoTags& t) { return known(t.exposureBias); }},
    {{"exposureProgram", Type::kText, Unit::kNone, "\"aperture priority\", ...", kExif},
     [](const PhotoTags& t) { return nameOf(t.program, kPrograms); }},
    {{"metering", Type::kText, Unit::kNone, "\"spot\", ...", kExif},
     [](const PhotoTags& t) { return nameOf(t.metering, kMeterings); }},
    {{"whiteBalance", Type::kText, Unit::kNone, "\"automatic\" or \"manual\"", kExif},
     [](const PhotoTags& t) { return nameOf(t.whiteBalance, kWhiteBalances); }},
    {{"focalLength", Type::kNumber, Unit::kMillimetres, "Of the lens", kExif},
     [](const PhotoTags& t) { return known(t.focalLength); }},
    {{"focalLength35", Type::kNumber, Unit::kMillimetres, "For the same view on 35 mm film", kExif},
     [](const PhotoTags& t) { return known(t.focalLength35); }},
    {{"flash", Type::kObject, Unit::kNone, "Flash", kExif, kFlashKeys},
     [](const PhotoTags& t) { return t.flash ? objectOf(kFlashRows, *t.flash) : Value(); }},
    {{"rotation", Type::kInteger, Unit::kDegrees, "To be turned clockwise for viewing", kExif},
     [](const PhotoTags& t) { return t.orientation ? Value(t.orientation->degrees) : Value(); }},
    {{"mirrored", Type::kBoolean, Unit::kNone, "To be mirrored before", kExif},
     [](const PhotoTags& t) { return ifTrue(t.orientation && t.orientation->isMirrored); }},
    {{"colourProfile", Type::kText, Unit::kNone, "Colour profile", "ICC, or Exif"},
     [](const PhotoTags& t) { return text(t.colourProfile); }},
    {{"position", Type::kObject, Unit::kNone, "Where", kExif, kPositionKeys},
     [](const PhotoTags& t) { return objectOf(kPositionRows, t); }},
    {{"address", Type::kObject, Unit::kNone, "Where, in words", kWords, kAddressKeys},
     [](const PhotoTags& t) { return objectOf(kAddressRows, t); }},
    {{"title", Type::kText, Unit::kNone, "Title", kWords},
     [](const PhotoTags& t) { return text(t.title); }},
    {{"headline", Type::kText, Unit::kNone, "Headline", kWords},
     [](const PhotoTags& t) { return text(t.headline); }},
    {{"caption", Type::kText, Unit::kNone, "Description", kWords},
     [](const PhotoTags& t) { return text(t.description); }},
    {{"keywords", Type::kTexts, Unit::kNone, "Keywords", kWords},
     [](const PhotoTags& t) { return texts(t.keywords); }},
    {{"keywordPaths", Type::kTexts, Unit::kNone, "\"Places|Alps|Eiger\"", "XMP"},
     [](const PhotoTags& t) { return texts(t.keywordPaths); }},
    {{"rating",
      Type::kInteger,
      Unit::kNone,
      "Stars, 0 to 5; -1 is rejected",
      kWords,
      {},
      R"("minimum":-1,"maximum":5)"},
     [](const PhotoTags& t) { return known(t.rating); }},
    {{"label", Type::kText, Unit::kNone, "Label", "XMP"},
     [](const PhotoTags& t) { return text(t.label); }},
    {{"creators", Type::kTexts, Unit::kNone, "Photographers", kWords},
     [](const PhotoTags& t) { return texts(t.creators); }},
    {{"copyright", Type::kText, Unit::kNone, "Copyright", kWords},
     [](const PhotoTags& t) { return text(t.copyright); }},
    {{"credit", Type::kText, Unit::kNone, "To be named with the photo", kWords},
     [](const PhotoTags& t) { return text(t.credit); }},
    {{"people", Type::kObjects, Unit::kNone, "People and other things in the picture", "XMP",
      kRegionKeys},
     [](const PhotoTags& t) { return objectsOf(kRegionRows, t.regions); }},
    {{"burst", Type::kText, Unit::kNone, "Equal in all photos of a burst", "maker notes, XMP"},
     [](const PhotoTags& t) { return text(t.burst); }},
    {{"contentIdentifier", Type::kText, Unit::kNone, "Equal in a live photo's picture and film",
      "maker notes"},
     [](const PhotoTags& t) { return text(t.livePhoto); }},
    {{"motionPhoto", Type::kInteger, Unit::kBytes, "From the end of the file to the film in it",
      "XMP"},
     [](const PhotoTags& t) { return known(t.motionPhoto); }},
});

// Of the picture that people see; the size of a RAW photo is that of the camera, not of a
// thumbnail.
constexpr auto kShownKeys = std::to_array<Key>({
    {"shownWidth", Type::kInteger, Unit::kPixels, "As to be viewed", kExif},
    {"shownHeight", Type::kInteger, Unit::kPixels, "As to be viewed", kExif},
});

// The size of the stored picture: of RAW photos the camera says it, as a probe finds a thumbnail.
media::PhotoSize storedSize(const Document& document, const PhotoTags& tags) {
  const probe::PhotoFacts& photo = *document.photo;
  return tags.storedSize.value_or(media::PhotoSize{photo.width, photo.height});
}

void addSizes(Value& object, const Document& document, const PhotoTags& tags) {
  auto [width, height] = storedSize(document, tags);
  if (width <= 0 || height <= 0) return;
  object.set("width", width);
  object.set("height", height);
  if (!tags.orientation) return;
  if (tags.orientation->degrees % 180 != 0) std::swap(width, height);
  object.set("shownWidth", width);
  object.set("shownHeight", height);
}

template <std::size_t... kSizes>
constexpr auto joined(const std::array<Key, kSizes>&... lists) {
  std::array<Key, (kSizes + ...)> all;
  std::size_t end = 0;
  const auto append = [&](const auto& list) {
    for (const Key& key : list) all[end++] = key;
  };
  (append(lists), ...);
  return all;
}

constexpr auto kAllKeys = joined(kPhotoKeys, kShownKeys, keysOf(kTagRows));

void addPhoto(Value& object, const Document& document) {
  if (!document.photo) return;
  add(object, kPhotoRows, document);
  const auto& tags = document.found.photoTags;
  if (!tags) return;
  addSizes(object, document, *tags);
  add(object, kTagRows, *tags);
}

}  // namespace

Part photoPart() {
  return {{"photo", "Photos", kAllKeys}, addPhoto};
}

}  // namespace kolum::describe
