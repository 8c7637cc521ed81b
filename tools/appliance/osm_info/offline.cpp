#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ascii.h"
#include "osm_info/catalogue.h"
#include "osm_info/cities.h"
#include "osm_info/geonames.h"
#include "osm_info/nearest.h"
#include "osm_info/sources.h"

namespace kolum::osm_info {

namespace {

constexpr char kCatalogueFolder[] = "/usr/share/locale/";
constexpr char kCatalogueFile[] = "/LC_MESSAGES/geonames.mo";

// From these levels on, an answer names the state and the city.
constexpr int kZoomState = 5;
constexpr int kZoomCity = 10;

// Not a map object: GeoNames has its own numbers.
constexpr char kObjectType[] = "geonames";

// A language's catalogues, in order of preference.
std::vector<Catalogue> cataloguesOf(const Language& language) {
  std::vector<Catalogue> catalogues;
  std::string_view rest = language.locales;
  while (!rest.empty()) {
    const std::string_view locale = rest.substr(0, rest.find(','));
    rest.remove_prefix(std::min(rest.size(), locale.size() + 1));
    catalogues.push_back(loadCatalogue(kCatalogueFolder + std::string(locale) + kCatalogueFile));
  }
  return catalogues;
}

// The name in the language, or else the one in the data.
std::string translated(const std::vector<Catalogue>& catalogues, const std::string& key,
                       const std::string& name) {
  // The empty key's translation is the catalogue's description of itself.
  if (key.empty()) return name;
  for (const Catalogue& catalogue : catalogues) {
    const std::string_view found = catalogue.translation(key);
    if (!found.empty()) return std::string(found);
  }
  return name;
}

// Equal neighbours, as in city states, are written once.
std::string joined(const std::vector<AddressPart>& parts) {
  std::string text;
  std::string_view last;
  for (const AddressPart& part : parts) {
    if (part.value == last) continue;
    if (!text.empty()) text += ", ";
    text += part.value;
    last = part.value;
  }
  return text;
}

Answer answerIn(const Language& language, const CityNames& city, int zoom) {
  const std::vector<Catalogue> catalogues = cataloguesOf(language);
  std::vector<AddressPart> parts;
  const auto add = [&](const char* what, const std::string& key, const std::string& name) {
    if (!name.empty()) parts.push_back({what, translated(catalogues, key, name)});
  };
  if (zoom >= kZoomCity) add("city", city.id, city.name);
  if (zoom >= kZoomState) add("state", city.countryCode + "." + city.stateCode, city.state);
  add("country", city.countryCode, city.country);

  const std::string address = joined(parts);
  if (!city.countryCode.empty()) parts.push_back({"country_code", ascii::lower(city.countryCode)});
  return {.language = std::string(language.code),
          .osmType = kObjectType,
          .osmId = city.id,
          .address = address,
          .parts = std::move(parts)};
}

}  // namespace

std::vector<Answer> answerOffline(const Settings& settings, const Query& query) {
  const auto nearest = cityAt(loadCities(), query.lat, query.lon);
  if (!nearest) {
    throw LookUpError("no city is known within " + std::to_string(static_cast<int>(kFarthestKm)) +
                      " km");
  }
  const CityNames city = cityNames(*nearest);
  std::vector<Answer> answers;
  for (const Language* language : settings.languages) {
    answers.push_back(answerIn(*language, city, query.zoom));
  }
  return answers;
}

// The cities are loaded by the first question, which is the caller's to wait for.
FindPlace placesOffline() {
  auto known = std::make_shared<std::optional<NearestCity>>();
  return [known](const Query& position) -> std::optional<NearPlace> {
    if (!*known) {
      const std::vector<City> cities = loadCities();
      if (cities.empty()) throw LookUpError("the data of libgeonames are missing");
      known->emplace(cities);
    }
    const auto nearest = (*known)->at(position.lat, position.lon);
    if (!nearest) return std::nullopt;
    return NearPlace{cityNames(nearest->number), nearest->metres};
  };
}

}  // namespace kolum::osm_info
