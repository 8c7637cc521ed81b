// The choice of the city that a position belongs to.
#ifndef KOLUM_OSM_INFO_CITIES_H
#define KOLUM_OSM_INFO_CITIES_H

#include <cstddef>
#include <optional>
#include <vector>

namespace kolum::osm_info {

struct City {
  double lat = 0;  // degrees
  double lon = 0;  // degrees
  unsigned population = 0;
};

// Beyond this distance from its centre no city is named.
inline constexpr double kFarthestKm = 100;

// The city's position in the list; empty when there is none within kFarthestKm. A city reaches as
// far as its population makes it large; within the reach of several the relative distance counts,
// outside all reaches the nearest edge.
std::optional<std::size_t> cityAt(const std::vector<City>& cities, double lat, double lon);

}  // namespace kolum::osm_info

#endif
