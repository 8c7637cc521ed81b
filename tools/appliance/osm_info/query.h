// The command line: lat=DEGREES lon=DEGREES [zoom=LEVEL].
#ifndef KOLUM_OSM_INFO_QUERY_H
#define KOLUM_OSM_INFO_QUERY_H

#include <string>
#include <string_view>
#include <vector>

namespace kolum::osm_info {

// Levels of detail, as map servers number them.
inline constexpr int kZoomWorld = 0;
inline constexpr int kZoomBuilding = 18;

struct Query {
  double lat = 0;  // degrees, -90 to 90
  double lon = 0;  // degrees, -180 to 180
  int zoom = kZoomBuilding;
};

// Throws std::invalid_argument with the reason. A zoom beyond the levels means the nearest one.
Query parseQuery(const std::vector<std::string_view>& arguments);

// "48.8584 2.2945": latitude and longitude with one space between them. Throws the same.
Query parsePosition(std::string_view text);

}  // namespace kolum::osm_info

#endif
