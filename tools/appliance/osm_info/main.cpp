// osm_info lat=DEGREES lon=DEGREES [zoom=LEVEL]: the place at a position, as XML.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "osm_info/answer.h"
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
    return print(osm_info::toXml(lookUp(osm_info::parseQuery(arguments))), kDone);
  } catch (const std::invalid_argument& error) {
    return failure(error, kUsage);
  } catch (const std::exception& error) {
    return failure(error, kFailed);
  }
}
