#include "osm_info/cities.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <tuple>

namespace kolum::osm_info {

namespace {

// The radius of a disc with about 2200 people per square kilometre, the density at a city's edges;
// at least that of a small town, at most the distance at which suburbs still use a giant city's
// name.
constexpr double kReachKmPerRootPerson = 0.012;
constexpr double kSmallestReachKm = 1.5;
constexpr double kLargestReachKm = 30;

double radians(double degrees) {
  return degrees * std::numbers::pi / 180;
}

// Along the great circle, also across the date line and the poles.
double distanceKm(double lat1, double lon1, double lat2, double lon2) {
  const double sinLat = std::sin(radians(lat2 - lat1) / 2);
  const double sinLon = std::sin(radians(lon2 - lon1) / 2);
  const double h =
      sinLat * sinLat + std::cos(radians(lat1)) * std::cos(radians(lat2)) * sinLon * sinLon;
  return 2 * kEarthRadiusKm * std::asin(std::sqrt(std::min(1.0, h)));
}

double reachKm(unsigned population) {
  return std::clamp(kReachKmPerRootPerson * std::sqrt(population), kSmallestReachKm,
                    kLargestReachKm);
}

// A smaller rank is better.
std::tuple<bool, double> rank(double distance, double reach) {
  const bool isOutside = distance > reach;
  return {isOutside, isOutside ? distance - reach : distance / reach};
}

}  // namespace

std::optional<std::size_t> cityAt(const std::vector<City>& cities, double lat, double lon) {
  std::optional<std::size_t> best;
  std::tuple<bool, double> bestRank;
  for (std::size_t number = 0; number < cities.size(); ++number) {
    const City& city = cities[number];
    const double distance = distanceKm(lat, lon, city.lat, city.lon);
    if (distance > kFarthestKm) continue;
    const auto cityRank = rank(distance, reachKm(city.population));
    if (best && cityRank >= bestRank) continue;
    best = number;
    bestRank = cityRank;
  }
  return best;
}

}  // namespace kolum::osm_info
