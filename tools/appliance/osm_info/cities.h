// Chooses the city that a position belongs to.
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

inline constexpr double kEarthRadiusKm = 6371;

// No city farther away than this from its centre is named.
inline constexpr double kFarthestKm = 100;

// The city's index in the list; empty if none is within kFarthestKm. A city's reach grows with its
// population; within the reach of several the relative distance decides, outside all reaches the
// nearest edge.
std::optional<std::size_t> cityAt(const std::vector<City>& cities, double lat, double lon);

}  // namespace kolum::osm_info

#endif
