#include "osm_info/nearest.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace kolum::osm_info {

namespace {

constexpr double kMetresPerKm = 1000;

double radians(double degrees) {
  return degrees * std::numbers::pi / 180;
}

double metresOf(double chord) {
  return 2 * kEarthRadiusKm * kMetresPerKm * std::asin(std::min(1.0, chord / 2));
}

}  // namespace

NearestCity::NearestCity(const std::vector<City>& cities) {
  points_.reserve(cities.size());
  for (const City& city : cities) points_.push_back(pointOf(city.lat, city.lon));
}

NearestCity::Point NearestCity::pointOf(double lat, double lon) {
  const double fromAxis = std::cos(radians(lat));
  return {fromAxis * std::cos(radians(lon)), fromAxis * std::sin(radians(lon)),
          std::sin(radians(lat))};
}

std::optional<Neighbour> NearestCity::at(double lat, double lon) const {
  const Point here = pointOf(lat, lon);
  std::size_t nearest = 0;
  double shortest = std::numeric_limits<double>::infinity();  // squared
  for (std::size_t number = 0; number < points_.size(); ++number) {
    const Point& there = points_[number];
    const double x = there[0] - here[0];
    const double y = there[1] - here[1];
    const double z = there[2] - here[2];
    const double distance = x * x + y * y + z * z;
    if (distance >= shortest) continue;
    shortest = distance;
    nearest = number;
  }
  const double metres = metresOf(std::sqrt(shortest));
  if (points_.empty() || metres > kFarthestKm * kMetresPerKm) return std::nullopt;
  return Neighbour{nearest, metres};
}

}  // namespace kolum::osm_info
