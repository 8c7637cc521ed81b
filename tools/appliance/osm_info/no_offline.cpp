#include "osm_info/sources.h"

namespace kolum::osm_info {

std::vector<Answer> answerOffline(const Settings&, const Query&) {
  throw LookUpError("this osm_info was built without libgeonames and needs a server");
}

}  // namespace kolum::osm_info
