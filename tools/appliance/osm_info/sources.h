// Where answers come from.
#ifndef KOLUM_OSM_INFO_SOURCES_H
#define KOLUM_OSM_INFO_SOURCES_H

#include <vector>

#include "osm_info/answer.h"
#include "osm_info/places.h"
#include "osm_info/query.h"
#include "osm_info/settings.h"

namespace kolum::osm_info {

// Each gives one answer per language, in the settings' order, and throws LookUpError if there is
// none.
std::vector<Answer> askServer(const Settings& settings, const Query& query);
std::vector<Answer> answerOffline(const Settings& settings, const Query& query);

// The nearest of the places that are installed here.
FindPlace placesOffline();

}  // namespace kolum::osm_info

#endif
