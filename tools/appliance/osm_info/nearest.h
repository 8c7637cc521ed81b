// Finds the city that is nearest to a position.
#ifndef KOLUM_OSM_INFO_NEAREST_H
#define KOLUM_OSM_INFO_NEAREST_H

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

#include "osm_info/cities.h"

namespace kolum::osm_info {

struct Neighbour {
  std::size_t number = 0;  // in the list of cities
  double metres = 0;       // along the great circle
};

// Made for many questions: a question takes some hundredths of a millisecond.
class NearestCity {
 public:
  explicit NearestCity(const std::vector<City>& cities);

  // Whatever its size, unlike cityAt(). Empty if none is within kFarthestKm.
  std::optional<Neighbour> at(double lat, double lon) const;

 private:
  // On a ball with the radius 1. The shortest way through the ball and the one along its surface
  // belong to the same city, also across the date line and the poles.
  using Point = std::array<double, 3>;
  static Point pointOf(double lat, double lon);

  std::vector<Point> points_;
};

}  // namespace kolum::osm_info

#endif
