#include "describe/parts.h"
#include "describe/table.h"

namespace kolum::describe {

namespace {

using geocode::Place;

constexpr const char* kSource = "GeoNames (geonames.org, CC BY 4.0)";

constexpr auto kPlaceRows = std::to_array<Row<Place>>({
    {{"name", Type::kText, Unit::kNone, "City, town or suburb", kSource},
     [](const Place& p) { return text(p.name); }},
    {{"region", Type::kText, Unit::kNone, "State or province", kSource},
     [](const Place& p) { return text(p.region); }},
    {{"country", Type::kText, Unit::kNone, "Country", kSource},
     [](const Place& p) { return text(p.country); }},
    {{"countryCode",
      Type::kText,
      Unit::kNone,
      "Two capitals, as ISO 3166-1 has them",
      kSource,
      {},
      R"("pattern":"^[A-Z]{2}$")"},
     [](const Place& p) { return text(p.countryCode); }},
    {{"distance",
      Type::kInteger,
      Unit::kMetres,
      "From the position to the place's centre",
      "the position",
      {},
      R"("minimum":0)"},
     [](const Place& p) -> Value { return p.distance; }},
    {{"geonamesId", Type::kInteger, Unit::kNone, "GeoNames' number of the place", kSource},
     [](const Place& p) { return known(p.geonamesId); }},
});
constexpr auto kPlaceKeys = keysOf(kPlaceRows);

constexpr auto kKeys = std::to_array<Key>({
    {"place", Type::kObject, Unit::kNone,
     "On request: the known place that is nearest to the position, if one is within 100 km",
     kSource, kPlaceKeys},
});

}  // namespace

Part placePart() {
  return {{"place", "Places of photos and films", kKeys},
          [](Value& object, const Document& document) {
            if (document.place) object.set("place", objectOf(kPlaceRows, *document.place));
          }};
}

}  // namespace kolum::describe
