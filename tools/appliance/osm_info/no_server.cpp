#include "osm_info/sources.h"

namespace kolum::osm_info {

std::vector<Answer> askServer(const Settings&, const Query&) {
  throw LookUpError("this osm_info was built without libcurl and cannot ask a server");
}

}  // namespace kolum::osm_info
