#include "osm_info/query.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <stdexcept>

namespace kolum::osm_info {

namespace {

constexpr double kLatMax = 90;
constexpr double kLonMax = 180;

[[noreturn]] void refuse(std::string_view name, const std::string& reason) {
  throw std::invalid_argument(std::string(name) + " " + reason);
}

template <typename Number>
Number numberOf(std::string_view name, std::string_view text) {
  Number number{};
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) refuse(name, "is not a number");
  return number;
}

double degreesOf(std::string_view name, std::string_view text, double max) {
  const double degrees = numberOf<double>(name, text);
  if (!std::isfinite(degrees) || std::abs(degrees) > max) {
    refuse(name, "is beyond " + std::to_string(static_cast<int>(max)) + " degrees");
  }
  return degrees;
}

}  // namespace

Query parseQuery(const std::vector<std::string_view>& arguments) {
  Query query;
  bool hasLat = false;
  bool hasLon = false;
  for (const std::string_view argument : arguments) {
    const std::string_view name = argument.substr(0, argument.find('='));
    const std::string_view value = argument.substr(std::min(argument.size(), name.size() + 1));
    if (name == "lat") {
      query.lat = degreesOf(name, value, kLatMax);
      hasLat = true;
    } else if (name == "lon") {
      query.lon = degreesOf(name, value, kLonMax);
      hasLon = true;
    } else if (name == "zoom") {
      query.zoom = std::clamp(numberOf<int>(name, value), kZoomWorld, kZoomBuilding);
    } else {
      refuse("argument", "'" + std::string(argument) + "' is unknown");
    }
  }
  if (!hasLat) refuse("lat", "is missing");
  if (!hasLon) refuse("lon", "is missing");
  return query;
}

Query parsePosition(std::string_view text) {
  const std::size_t space = text.find(' ');
  if (space == std::string_view::npos) refuse("lon", "is missing");
  return {.lat = degreesOf("lat", text.substr(0, space), kLatMax),
          .lon = degreesOf("lon", text.substr(space + 1), kLonMax)};
}

}  // namespace kolum::osm_info
