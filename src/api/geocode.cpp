#include <kolum/geocode.h>

#include "api/guarded.h"
#include "geocode/lookup.h"
#include "geocode/osm_answer.h"

namespace api = kolum::api;
namespace geocode = kolum::geocode;
using MediaLibrary::osm_addr_unit_s;
using MediaLibrary::osm_place_s;

int koOsmInfo(osm_param_s& param, osm_place_s& place) noexcept {
  return api::guarded(static_cast<int>(PLACE_NO_ANSWER),
                      [&] { return geocode::lookUp(param, place); });
}

int parseOsmInfo(const char* command, osm_place_s& place) noexcept {
  return api::guarded(static_cast<int>(PLACE_NO_ANSWER), [&] {
    return command != nullptr ? geocode::ask(command, place) : static_cast<int>(PLACE_NO_ANSWER);
  });
}

// By value, as hosts were built against it.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
int parseAddressXml(XMLNode node, std::vector<osm_addr_unit_s>& units) noexcept {
  return api::guarded(0, [&] {
    geocode::addAddressParts(node, units);
    return 0;
  });
}

void setWaitSecond(int attempt, unsigned int& seconds) noexcept {
  seconds = geocode::pauseOf(attempt);
}
