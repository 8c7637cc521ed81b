// The cities of libgeonames.
#ifndef KOLUM_OSM_INFO_GEONAMES_H
#define KOLUM_OSM_INFO_GEONAMES_H

#include <cstddef>
#include <string>
#include <vector>

#include "osm_info/cities.h"

namespace kolum::osm_info {

// The default names of a city and the regions around it, and the keys of their translations.
struct CityNames {
  std::string id = {};  // GeoNames' number; empty if unknown
  std::string name = {};
  std::string state = {};
  std::string stateCode = {};  // within the country; empty if unknown
  std::string country = {};
  std::string countryCode = {};  // two capitals
};

std::vector<City> loadCities();

// NUMBER is an index in that list.
CityNames cityNames(std::size_t number);

}  // namespace kolum::osm_info

#endif
