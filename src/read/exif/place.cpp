// Where a photo was taken.
#include <array>
#include <cmath>
#include <string>

#include "read/exif/readers.h"
#include "read/exif/texts.h"

namespace kolum::exif {

namespace {

// Degrees, minutes and seconds, of which the last ones may be missing.
std::optional<double> gpsAngle(const Metadata& metadata, unsigned tag) {
  const auto degrees = metadata.number(kGps, tag, 0);
  if (!degrees) return std::nullopt;
  const double minutes = metadata.number(kGps, tag, 1).value_or(0);
  const double seconds = metadata.number(kGps, tag, 2).value_or(0);
  if (*degrees < 0 || minutes < 0 || minutes > 60 || seconds < 0 || seconds > 60)
    return std::nullopt;
  return *degrees + minutes / 60 + seconds / 3600;
}

// The same with a sign, from the letter of a direction. Empty without one: half of the world is too
// much to guess.
std::optional<double> signedAngle(std::optional<double> angle, std::string_view letter,
                                  char positive, char negative) {
  if (!angle || letter.empty()) return std::nullopt;
  if (letter[0] == positive) return angle;
  return letter[0] == negative ? std::optional(-*angle) : std::nullopt;
}

// "51,30.5N" or "51,30,30N".
std::optional<double> xmpAngle(std::string text, char positive, char negative) {
  if (text.empty()) return std::nullopt;
  const std::string letter(1, text.back());
  text.pop_back();
  double angle = 0;
  double unit = 1;
  for (const std::string& part : parts(text, ',')) {
    const auto number = numberIn(part);
    if (!number || *number < 0) return std::nullopt;
    angle += *number / unit;
    unit *= 60;
  }
  return signedAngle(angle, letter, positive, negative);
}

std::optional<media::Position> position(const Metadata& metadata) {
  constexpr double kMostLatitude = 90;
  constexpr double kMostLongitude = 180;
  auto latitude = signedAngle(gpsAngle(metadata, 2), metadata.text(kGps, 1), 'N', 'S');
  auto longitude = signedAngle(gpsAngle(metadata, 4), metadata.text(kGps, 3), 'E', 'W');
  if (!latitude) latitude = xmpAngle(metadata.xmp().text(XmpProperty::kLatitude), 'N', 'S');
  if (!longitude) longitude = xmpAngle(metadata.xmp().text(XmpProperty::kLongitude), 'E', 'W');
  if (!latitude || !longitude || !(std::abs(*latitude) <= kMostLatitude) ||
      !(std::abs(*longitude) <= kMostLongitude))
    return std::nullopt;
  return media::Position{.latitude = *latitude, .longitude = *longitude};
}

std::optional<double> altitude(const Metadata& metadata) {
  constexpr double kMost = 100'000;
  const auto metres = metadata.number(kGps, 6);
  if (!metres || std::abs(*metres) > kMost) return std::nullopt;
  return metadata.integer(kGps, 5) == 1 ? -*metres : *metres;
}

std::optional<media::Direction> direction(const Metadata& metadata) {
  const auto degrees = metadata.number(kGps, 0x11);
  if (!degrees || *degrees < 0 || *degrees > 360) return std::nullopt;
  const std::string reference = metadata.text(kGps, 0x10);
  media::Direction found = {.degrees = *degrees};
  if (reference == "T") found.north = media::North::kTrue;
  if (reference == "M") found.north = media::North::kMagnetic;
  return found;
}

std::optional<double> accuracy(const Metadata& metadata) {
  constexpr double kEarth = 40'000'000;
  const auto metres = metadata.number(kGps, 0x1F);
  return metres && *metres >= 0 && *metres <= kEarth ? metres : std::nullopt;
}

struct PlaceRow {
  std::string media::PhotoTags::*field;
  XmpProperty xmp;
  // Where the camera was, and then where that is what it looked at.
  XmpProperty created;
  XmpProperty shown;
  unsigned iptc;
};

constexpr PlaceRow kPlaces[] = {
    {&media::PhotoTags::location, XmpProperty::kLocation, XmpProperty::kCreatedSublocation,
     XmpProperty::kShownSublocation, 92},
    {&media::PhotoTags::city, XmpProperty::kCity, XmpProperty::kCreatedCity,
     XmpProperty::kShownCity, 90},
    {&media::PhotoTags::state, XmpProperty::kState, XmpProperty::kCreatedState,
     XmpProperty::kShownState, 95},
    {&media::PhotoTags::country, XmpProperty::kCountry, XmpProperty::kCreatedCountry,
     XmpProperty::kShownCountry, 101},
    {&media::PhotoTags::countryCode, XmpProperty::kCountryCode, XmpProperty::kCreatedCountryCode,
     XmpProperty::kShownCountryCode, 100},
};

std::string placeText(const Metadata& metadata, const PlaceRow& row) {
  std::string text = metadata.xmp().text(row.xmp);
  // The first place of a list, or a single one.
  for (const XmpProperty structured : {row.created, row.shown})
    for (const unsigned item : {1U, 0U})
      if (text.empty()) text = metadata.xmp().text(structured, item);
  return text.empty() ? metadata.iptcText(row.iptc) : text;
}

}  // namespace

void readPlace(const Metadata& metadata, media::PhotoTags& tags) {
  tags.position = position(metadata);
  tags.altitude = altitude(metadata);
  tags.direction = direction(metadata);
  tags.positionAccuracy = accuracy(metadata);
  for (const PlaceRow& row : kPlaces) tags.*row.field = placeText(metadata, row);
}

}  // namespace kolum::exif
