#include "media/film_position.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string>

namespace kolum::media {

namespace {

constexpr double kMostLatitude = 90;
constexpr double kMostLongitude = 180;

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// Takes a text from its beginning.
class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {}

  std::string_view rest() const { return rest_; }
  void skipSpaces() {
    while (!rest_.empty() && rest_.front() == ' ') rest_.remove_prefix(1);
  }
  bool accept(std::string_view text) {
    if (!rest_.starts_with(text)) return false;
    rest_.remove_prefix(text.size());
    return true;
  }
  // 1 or -1; empty if no sign is next.
  std::optional<int> sign() {
    if (accept("+")) return 1;
    if (accept("-") || accept("\u2212")) return -1;
    return std::nullopt;
  }
  // Digits with or without a fraction.
  std::string_view digits() {
    const auto whole = std::find_if_not(rest_.begin(), rest_.end(), isDigit);
    auto end = whole;
    if (whole != rest_.begin() && end != rest_.end() && *end == '.')
      end = std::find_if_not(end + 1, rest_.end(), isDigit);
    const auto found = rest_.substr(0, static_cast<std::size_t>(end - rest_.begin()));
    rest_.remove_prefix(found.size());
    return found;
  }

 private:
  std::string_view rest_;
};

std::optional<double> numberOf(std::string_view digits) {
  constexpr std::size_t kLongest = 32;
  double value = 0;
  const auto end = digits.data() + digits.size();
  if (digits.empty() || digits.size() > kLongest ||
      std::from_chars(digits.data(), end, value).ec != std::errc())
    return std::nullopt;
  return value;
}

// Degrees, with minutes and seconds if there are more digits than degrees have: "48.8577",
// "4851.46", "485127.7".
std::optional<double> degreesOf(std::string_view digits, std::size_t degreeDigits) {
  constexpr double kSixty = 60;
  const std::size_t whole = std::min(digits.find('.'), digits.size());
  if (whole <= degreeDigits) return numberOf(digits);
  const bool hasSeconds = whole > degreeDigits + 2;
  const std::size_t minuteAt = whole - (hasSeconds ? 4 : 2);
  const std::size_t secondAt = hasSeconds ? whole - 2 : digits.size();
  if (minuteAt > degreeDigits) return std::nullopt;
  const auto degrees = numberOf(digits.substr(0, minuteAt));
  const auto minutes = numberOf(digits.substr(minuteAt, secondAt - minuteAt));
  const auto seconds = hasSeconds ? numberOf(digits.substr(secondAt)) : 0.0;
  if (!degrees || !minutes || !seconds || *minutes >= kSixty || *seconds >= kSixty)
    return std::nullopt;
  return *degrees + *minutes / kSixty + *seconds / (kSixty * kSixty);
}

std::optional<double> altitudeOf(Reader& text) {
  constexpr double kDeepest = -12'000;
  constexpr double kHighest = 100'000;
  const auto sign = text.sign();
  const auto number = numberOf(text.digits());
  if (!sign || !number) return std::nullopt;
  const double altitude = *sign * *number;
  if (altitude < kDeepest || altitude > kHighest) return std::nullopt;
  return altitude;
}

// With signs, or separated by a comma or a space.
std::optional<FilmPosition> signedPosition(Reader text) {
  constexpr std::size_t kLatitudeDigits = 2;
  constexpr std::size_t kLongitudeDigits = 3;
  const int north = text.sign().value_or(1);
  const auto latitude = degreesOf(text.digits(), kLatitudeDigits);
  const bool isSeparated = text.accept(",") || text.rest().starts_with(' ');
  text.skipSpaces();
  const auto east = text.sign();
  const auto longitude = degreesOf(text.digits(), kLongitudeDigits);
  if (!latitude || !longitude || (!east && !isSeparated)) return std::nullopt;
  FilmPosition position = {.latitude = north * *latitude,
                           .longitude = east.value_or(1) * *longitude};
  position.altitude = altitudeOf(text);
  return position;
}

// What may stand behind degrees, minutes and seconds.
constexpr std::array<std::array<std::string_view, 3>, 3> kUnits = {
    {{"\u00B0", "\u00BA", "deg"}, {"\u2032", "\u2019", "'"}, {"\u2033", "\u201D", "\""}}};

// "48°51′27.7″" with the letter of a direction behind it, which is the first or the second of
// LETTERS.
std::optional<double> letteredAngle(Reader& text, std::string_view letters) {
  double angle = 0;
  double unit = 1;
  bool isFound = false;
  for (const auto& signs : kUnits) {
    text.skipSpaces();
    const Reader before = text;
    const auto number = numberOf(text.digits());
    text.skipSpaces();
    const bool isMarked = std::any_of(signs.begin(), signs.end(),
                                      [&](std::string_view sign) { return text.accept(sign); });
    if (number && isMarked) {
      angle += *number * unit;
      isFound = true;
    } else {
      text = before;
    }
    unit /= 60;
  }
  text.skipSpaces();
  if (!isFound) return std::nullopt;
  if (text.accept(letters.substr(0, 1))) return angle;
  if (text.accept(letters.substr(1, 1))) return -angle;
  return std::nullopt;
}

std::optional<FilmPosition> letteredPosition(Reader text) {
  const auto latitude = letteredAngle(text, "NS");
  const auto longitude = letteredAngle(text, "EW");
  if (!latitude || !longitude) return std::nullopt;
  FilmPosition position = {.latitude = *latitude, .longitude = *longitude};
  text.skipSpaces();
  const int up = text.sign().value_or(1);
  const auto altitude = numberOf(text.digits());
  if (altitude && *altitude <= 100'000 && text.accept("m")) position.altitude = up * *altitude;
  return position;
}

}  // namespace

std::optional<FilmPosition> positionOf(std::string_view text) {
  Reader reader(text);
  reader.skipSpaces();
  auto position = signedPosition(reader);
  if (!position) position = letteredPosition(reader);
  if (!position || std::abs(position->latitude) > kMostLatitude ||
      std::abs(position->longitude) > kMostLongitude ||
      (position->latitude == 0 && position->longitude == 0))
    return std::nullopt;
  return position;
}

std::string_view placeNameOf(std::string_view text) {
  const std::size_t end = text.find('/');
  return end == std::string_view::npos ? "" : text.substr(end + 1);
}

}  // namespace kolum::media
