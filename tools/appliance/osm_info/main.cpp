// osm_info lat=DEGREES lon=DEGREES [zoom=LEVEL]: the place at a position, as XML.
// osm_info --places: the nearest known place for each line, as JSON.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "osm_info/answer.h"
#include "osm_info/places.h"
#include "osm_info/query.h"
#include "osm_info/settings.h"
#include "osm_info/sources.h"

namespace {

namespace osm_info = kolum::osm_info;

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;

constexpr char kSettingsVariable[] = "OSM_INFO_CONFIG";

constexpr char kHelp[] =
    "Usage: osm_info lat=DEGREES lon=DEGREES [zoom=LEVEL]\n"
    "       osm_info --places\n"
    "Prints the place at a position as XML: the address in several languages, or an error.\n"
    "\n"
    "  lat=DEGREES  latitude, -90 to 90\n"
    "  lon=DEGREES  longitude, -180 to 180\n"
    "  zoom=LEVEL   detail: 3 country, 5 state, 10 city, 18 building (the default)\n"
    "\n"
    "The answer comes from the server named in /etc/config/osm_info.conf (or in the file that\n"
    "OSM_INFO_CONFIG names), or without a server from the GeoNames cities installed here. Their\n"
    "data are from GeoNames (https://www.geonames.org), licence CC BY 4.0: name the source where\n"
    "you show them.\n"
    "\n"
    "With --places it answers each line \"LATITUDE LONGITUDE\" of its standard input with a line "
    "of\n"
    "JSON: the nearest of those cities within 100 km, with its distance in metres. It asks no "
    "server,\n"
    "whatever is configured.\n"
    "\n"
    "Exit status: 0 done, 1 no answer, 2 wrong usage; 1 and 2 print an \"error\" element.\n";

int print(const std::string& text, int status) {
  return std::printf("%s\n", text.c_str()) < 0 || std::fflush(stdout) != 0 ? kFailed : status;
}

int failure(const std::exception& error, int status) {
  std::fprintf(stderr, "osm_info: %s\n", error.what());
  return print(osm_info::errorToXml(error.what()), status);
}

std::vector<osm_info::Answer> lookUp(const osm_info::Query& query) {
  const char* chosen = std::getenv(kSettingsVariable);
  const osm_info::Settings settings = chosen != nullptr
                                          ? osm_info::readSettings(chosen, true)
                                          : osm_info::readSettings(osm_info::kSettingsFile, false);
  return settings.serverUrl.empty() ? osm_info::answerOffline(settings, query)
                                    : osm_info::askServer(settings, query);
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string_view> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  if (arguments.size() == 1 && (arguments[0] == "--help" || arguments[0] == "-h")) {
    return std::fputs(kHelp, stdout) == EOF || std::fflush(stdout) != 0 ? kFailed : kDone;
  }
  try {
    if (arguments.size() == 1 && arguments[0] == "--places")
      return osm_info::servePlaces(osm_info::placesOffline()) ? kDone : kFailed;
    return print(osm_info::toXml(lookUp(osm_info::parseQuery(arguments))), kDone);
  } catch (const std::invalid_argument& error) {
    return failure(error, kUsage);
  } catch (const std::exception& error) {
    return failure(error, kFailed);
  }
}
