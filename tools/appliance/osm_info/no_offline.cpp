#include "osm_info/sources.h"

namespace kolum::osm_info {

std::vector<Answer> answerOffline(const Settings&, const Query&) {
  throw LookUpError("this osm_info was built without libgeonames and needs a server");
}

FindPlace placesOffline() {
  return [](const Query&) -> std::optional<NearPlace> {
    throw LookUpError("this osm_info was built without libgeonames and knows no places");
  };
}

}  // namespace kolum::osm_info
