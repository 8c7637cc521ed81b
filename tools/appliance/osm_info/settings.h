// The configuration file: which server to ask, if any.
#ifndef KOLUM_OSM_INFO_SETTINGS_H
#define KOLUM_OSM_INFO_SETTINGS_H

#include <chrono>
#include <string>
#include <vector>

#include "osm_info/languages.h"

namespace kolum::osm_info {

inline constexpr char kSettingsFile[] = "/etc/config/osm_info.conf";

struct Settings {
  std::string serverUrl;  // without a trailing "/"; empty: answer offline
  std::string caFile;     // certificates to trust instead of the system's; empty: the system's
  std::chrono::seconds connectTimeout{3};  // for each connection
  std::chrono::seconds timeout{20};        // for the whole look-up
  std::vector<const Language*> languages;  // to answer in, never empty
};

// Reads an ini file. If it is missing, the defaults apply, unless it is required. Throws
// LookUpError if it cannot be read or a value is wrong.
Settings readSettings(const std::string& path, bool isRequired);

}  // namespace kolum::osm_info

#endif
