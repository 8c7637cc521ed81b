#include "machine/licences.h"

#include <link.h>

#include <algorithm>
#include <iterator>
#include <sstream>
#include <string_view>

#include "isolation/isolation.h"
#include "machine/programs.h"
#include "read/ffmpeg/version.h"

namespace kolum::tool {

namespace {

// Where a part is looked for.
enum class Place { kThisProcess, kWorker, kHeaders, kStandIn, kNowhere };

constexpr Place kCurl = KOLUM_OSM_INFO_HAS_CURL ? Place::kStandIn : Place::kNowhere;
constexpr Place kGeonames = KOLUM_OSM_INFO_HAS_GEONAMES ? Place::kStandIn : Place::kNowhere;
constexpr const char* kOsmInfoLicence = KOLUM_OSM_INFO_HAS_GEONAMES ? "GPL-3.0-only" : "MIT";

struct Row {
  const char* part;  // libraries with the names of their files
  const char* name;  // of the licence; null for FFmpeg's, which depends on its build
  const char* users;
  Place place;
  const char* file = nullptr;  // how its name begins, if this process loads it, or the program
};

constexpr const char* kProbers = "libkolum kolum kolum-worker dsf2flac";

constexpr Row kRows[] = {
    {"libkolum", "MIT", "", Place::kThisProcess, "libkolum.so"},
    {"libkohost", "MIT", "", Place::kThisProcess, "libkohost.so"},
    {"kolum", "MIT", "", Place::kHeaders},
    {"kolum-worker", "GPL-2.0-or-later", "", Place::kWorker},
    {"dsf2flac", "MIT", "", Place::kStandIn, "dsf2flac"},
    {"osm_info", kOsmInfoLicence, "", Place::kStandIn, "osm_info"},
    {"setcfg", "MIT", "", Place::kStandIn, "setcfg"},
    {"FFmpeg (libavformat, libavcodec, libavutil)", nullptr, kProbers, Place::kThisProcess,
     "libavutil.so"},
    {"TagLib (libtag)", "LGPL-2.1-only OR MPL-1.1", kProbers, Place::kThisProcess, "libtag.so"},
    {"libdvdread", "GPL-2.0-or-later", "libkohost", Place::kThisProcess, "libdvdread.so"},
    {"iniParser (libiniparser)", "MIT", "libkolum kolum osm_info setcfg", Place::kThisProcess,
     "libiniparser.so"},
    {"pugixml (libpugixml)", "MIT", "libkolum kolum dsf2flac osm_info", Place::kThisProcess,
     "libpugixml.so"},
    {"SQLite (libsqlite3)", "public domain", "kolum", Place::kThisProcess, "libsqlite3.so"},
    {"CLI11", "BSD-3-Clause", "kolum", Place::kHeaders},
    {"JSON for Modern C++", "MIT", "libkolum kolum osm_info", Place::kHeaders},
    {"jQuery, Chart.js, DataTables, Scroller", "MIT", "kolum", Place::kHeaders},
    {"Natural Earth", "public domain", "kolum", Place::kHeaders},
    {"Exiv2 (libexiv2)", "GPL-2.0-or-later", "kolum-worker", Place::kWorker},
    {"Expat (libexpat)", "MIT", "kolum-worker", Place::kWorker},
    {"Brotli (libbrotlidec)", "MIT", "kolum-worker", Place::kWorker},
    {"libseccomp", "LGPL-2.1-only", "kolum-worker", Place::kWorker},
    {"libudfread", "LGPL-2.1-or-later", "kolum-worker", Place::kWorker},
    {"zlib (libz)", "Zlib", "kolum kolum-worker", Place::kThisProcess, "libz.so"},
    {"libgeonames", "GPL-3.0-only", "osm_info", kGeonames, "osm_info"},
    {"GLib (libglib-2.0)", "LGPL-2.1-or-later", "osm_info", kGeonames, "osm_info"},
    {"curl (libcurl)", "curl", "osm_info", kCurl, "osm_info"},
};

bool isLoaded(std::string_view file) {
  return dl_iterate_phdr(
             [](dl_phdr_info* info, std::size_t, void* wanted) {
               const std::string_view path = info->dlpi_name;
               const std::string_view name = path.substr(path.rfind('/') + 1);
               return name.starts_with(*static_cast<std::string_view*>(wanted)) ? 1 : 0;
             },
             &file) != 0;
}

bool isThere(const Row& row, bool hasWorker) {
  switch (row.place) {
    case Place::kThisProcess:
      return isLoaded(row.file);
    case Place::kWorker:
      return hasWorker;
    case Place::kStandIn:
      return !standInFolder().empty() && isProgram(standInFolder() + row.file);
    case Place::kHeaders:
      return true;
    case Place::kNowhere:
      break;
  }
  return false;
}

std::vector<std::string> wordsOf(const char* text) {
  std::istringstream words(text);
  return {std::istream_iterator<std::string>(words), {}};
}

}  // namespace

std::vector<Licence> licences() {
  std::string why;
  const bool hasWorker = isolation::activeLayers(why).has_value();
  std::vector<Licence> found;
  std::ranges::transform(kRows, std::back_inserter(found), [&](const Row& row) {
    return Licence{.part = row.part,
                   .name = row.name != nullptr ? row.name : ffmpeg::licenceInUse(),
                   .users = wordsOf(row.users),
                   .isThere = isThere(row, hasWorker)};
  });
  return found;
}

}  // namespace kolum::tool
