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
  if (!latitude) latitude = xmpAngle(metadata.xmpText("Xmp.exif.GPSLatitude"), 'N', 'S');
  if (!longitude) longitude = xmpAngle(metadata.xmpText("Xmp.exif.GPSLongitude"), 'E', 'W');
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
  const char* xmp;
  const char* part;  // of a place in XMP's structures
  unsigned iptc;
};

constexpr PlaceRow kPlaces[] = {
    {&media::PhotoTags::location, "Xmp.iptc.Location", "Sublocation", 92},
    {&media::PhotoTags::city, "Xmp.photoshop.City", "City", 90},
    {&media::PhotoTags::state, "Xmp.photoshop.State", "ProvinceState", 95},
    {&media::PhotoTags::country, "Xmp.photoshop.Country", "CountryName", 101},
    {&media::PhotoTags::countryCode, "Xmp.iptc.CountryCode", "CountryCode", 100},
};

// Where the camera was, and then where that is what it looked at.
constexpr const char* kStructures[] = {"Xmp.iptcExt.LocationCreated", "Xmp.iptcExt.LocationShown"};

std::string placeText(const Metadata& metadata, const PlaceRow& row) {
  std::string text = metadata.xmpText(row.xmp);
  for (const char* structure : kStructures)
    for (const char* index : {"[1]/Iptc4xmpExt:", "/Iptc4xmpExt:", "[1]/iptcExt:", "/iptcExt:"})
      if (text.empty()) text = metadata.xmpText(std::string(structure) + index + row.part);
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
