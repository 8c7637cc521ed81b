// Requests to a Nominatim-compatible server, and its answers (in its "jsonv2" format).
#ifndef KOLUM_OSM_INFO_SERVER_REPLY_H
#define KOLUM_OSM_INFO_SERVER_REPLY_H

#include <string>
#include <string_view>

#include "osm_info/answer.h"
#include "osm_info/languages.h"
#include "osm_info/query.h"

namespace kolum::osm_info {

std::string requestUrl(const std::string& serverUrl, const Query& query, const Language& language);

// Throws LookUpError with the server's own words if it has no answer.
Answer readReply(long httpStatus, std::string_view body, const Language& language);

}  // namespace kolum::osm_info

#endif
