// The cities of libgeonames.
#ifndef KOLUM_OSM_INFO_GEONAMES_H
#define KOLUM_OSM_INFO_GEONAMES_H

#include <cstddef>
#include <string>
#include <vector>

#include "osm_info/cities.h"

namespace kolum::osm_info {

// What a city and the regions around it are called by default, and the keys of their translations.
struct CityNames {
  std::string id;  // GeoNames' number; empty when unknown
  std::string name;
  std::string state;
  std::string stateCode;  // within the country; empty when unknown
  std::string country;
  std::string countryCode;  // two capitals
};

std::vector<City> loadCities();

// NUMBER is a position in that list.
CityNames cityNames(std::size_t number);

}  // namespace kolum::osm_info

#endif
