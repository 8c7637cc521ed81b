#include "media/photo_tags.h"

#include <algorithm>
#include <chrono>
#include <climits>
#include <cmath>
#include <initializer_list>
#include <string_view>

#include "base/utf8.h"

namespace kolum::media {

namespace {

template <typename Value, typename Check>
bool isNothingOr(const std::optional<Value>& value, Check check) {
  return !value || check(*value);
}

template <typename Number>
auto within(Number least, Number most) {
  return [=](Number value) { return value >= least && value <= most; };
}

bool isFinite(double value) {
  return std::isfinite(value);
}

bool isText(const std::string& text) {
  return text.size() <= kLongestPhotoText && text.find('\0') == text.npos && isUtf8(text);
}

bool isTextList(const std::vector<std::string>& texts) {
  return texts.size() <= kMostPhotoTexts && std::ranges::all_of(texts, isText);
}

bool isDate(const PhotoTime& time) {
  if (time.day == 0) return within(0, 12)(time.month);
  const std::chrono::year_month_day date(std::chrono::year(time.year),
                                         std::chrono::month(static_cast<unsigned>(time.month)),
                                         std::chrono::day(static_cast<unsigned>(time.day)));
  return within(1, 12)(time.month) && within(1, 31)(time.day) && date.ok();
}

bool isTime(const PhotoTime& time) {
  constexpr int kLargestOffset = 14 * 60;
  constexpr std::size_t kMostDigits = 9;
  return within(1, 9999)(time.year) && isDate(time) && within(0, 23)(time.hour) &&
         within(0, 59)(time.minute) && within(0, 59)(time.second) &&
         time.subSecond.size() <= kMostDigits &&
         time.subSecond.find_first_not_of("0123456789") == std::string::npos &&
         isNothingOr(time.offset, within(-kLargestOffset, kLargestOffset));
}

bool isPositive(const Rational& value) {
  return value.num > 0 && value.den > 0;
}

bool isSize(const PhotoSize& size) {
  return size.width > 0 && size.height > 0;
}

bool isOrientation(const Orientation& value) {
  return within(1, 8)(value.value) && within(0, 270)(value.degrees) && value.degrees % 90 == 0;
}

bool isPosition(const Position& value) {
  return within(-90.0, 90.0)(value.latitude) && within(-180.0, 180.0)(value.longitude);
}

bool isDirection(const Direction& value) {
  return within(0.0, 360.0)(value.degrees);
}

bool isArea(const Area& area) {
  const auto isPart = within(0.0, 1.0);
  return isPart(area.centreX) && isPart(area.centreY) && isPart(area.width) && isPart(area.height);
}

bool isRegion(const Region& region) {
  return isText(region.name) && isText(region.type) && isNothingOr(region.area, isArea);
}

bool hasValidNumbers(const PhotoTags& tags) {
  const auto isAboveZero = [](auto value) { return isFinite(value) && value > 0; };
  return isNothingOr(tags.exposureTime, isPositive) && isNothingOr(tags.aperture, isAboveZero) &&
         isNothingOr(tags.iso, within(1, INT_MAX)) && isNothingOr(tags.exposureBias, isFinite) &&
         isNothingOr(tags.focalLength, isAboveZero) &&
         isNothingOr(tags.focalLength35, isAboveZero) &&
         isNothingOr(tags.flash,
                     [](const Flash& flash) { return within(0, 65535)(flash.value); }) &&
         isNothingOr(tags.altitude, isFinite) && isNothingOr(tags.positionAccuracy, isFinite) &&
         isNothingOr(tags.rating, within(-1, 5)) &&
         isNothingOr(tags.motionPhoto, within(std::int64_t{1}, std::int64_t{INT64_MAX}));
}

}  // namespace

bool isValid(const PhotoTags& tags) {
  const bool hasTexts = std::ranges::all_of(
      std::initializer_list<const std::string*>{
          &tags.make,        &tags.model,    &tags.lensMake,      &tags.lensModel, &tags.serial,
          &tags.lensSerial,  &tags.software, &tags.colourProfile, &tags.location,  &tags.city,
          &tags.state,       &tags.country,  &tags.countryCode,   &tags.title,     &tags.headline,
          &tags.description, &tags.label,    &tags.copyright,     &tags.credit,    &tags.burst,
          &tags.livePhoto},
      [](const std::string* text) { return isText(*text); });
  return hasTexts && isTextList(tags.keywords) && isTextList(tags.keywordPaths) &&
         isTextList(tags.creators) && tags.regions.size() <= kMostPhotoTexts &&
         std::ranges::all_of(tags.regions, isRegion) && isNothingOr(tags.taken, isTime) &&
         isNothingOr(tags.digitized, isTime) && isNothingOr(tags.modified, isTime) &&
         isNothingOr(tags.gpsTime, isTime) && isNothingOr(tags.orientation, isOrientation) &&
         isNothingOr(tags.storedSize, isSize) && isNothingOr(tags.shownSize, isSize) &&
         isNothingOr(tags.position, isPosition) && isNothingOr(tags.direction, isDirection) &&
         hasValidNumbers(tags);
}

}  // namespace kolum::media
