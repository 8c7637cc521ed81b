#include "osm_info/geonames.h"

#include <geonames/geonames.h>

#include <cstring>
#include <memory>

namespace kolum::osm_info {

namespace {

struct Deleter {
  void operator()(GeonamesCity* city) const { geonames_city_free(city); }
};
using CityRecord = std::unique_ptr<GeonamesCity, Deleter>;

// The library has functions for everything in a record except its number and its state's code,
// which are the keys of translations. They are read from the record if it is a tuple of the known
// type; otherwise both stay empty and names untranslated.
constexpr char kRecordType[] = "(sssssssudd)";
constexpr gsize kIdField = 0;
constexpr gsize kStateCodeField = 2;

std::string fieldOf(GeonamesCity* record, gsize field) {
  if (std::strcmp(g_variant_get_type_string(record), kRecordType) != 0) return {};
  GVariant* child = g_variant_get_child_value(record, field);
  std::string text = g_variant_get_string(child, nullptr);
  g_variant_unref(child);
  return text;
}

std::string orEmpty(const char* text) {
  return text != nullptr ? text : "";
}

CityRecord recordOf(gint number) {
  return CityRecord(geonames_get_city(number));
}

}  // namespace

// Positions only: reading all names would take most of the time.
std::vector<City> loadCities() {
  std::vector<City> cities;
  const gint count = geonames_get_n_cities();
  for (gint number = 0; number < count; ++number) {
    const CityRecord record = recordOf(number);
    cities.push_back({.lat = geonames_city_get_latitude(record.get()),
                      .lon = geonames_city_get_longitude(record.get()),
                      .population = geonames_city_get_population(record.get())});
  }
  return cities;
}

CityNames cityNames(std::size_t number) {
  const CityRecord record = recordOf(static_cast<gint>(number));
  return {.id = fieldOf(record.get(), kIdField),
          .name = orEmpty(geonames_city_get_name(record.get())),
          .state = orEmpty(geonames_city_get_state(record.get())),
          .stateCode = fieldOf(record.get(), kStateCodeField),
          .country = orEmpty(geonames_city_get_country(record.get())),
          .countryCode = orEmpty(geonames_city_get_country_code(record.get()))};
}

}  // namespace kolum::osm_info
