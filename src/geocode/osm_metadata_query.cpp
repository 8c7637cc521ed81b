#include <kolum/geocode.h>
#include <kolum/host.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <string>
#include <vector>

#include "geocode/osm_answer.h"
#include "support/log.h"
#include "support/shell.h"
#include "xml/xml_node.h"

namespace geocode = kolum::geocode;
using MediaLibrary::osm_addr_unit_s;
using MediaLibrary::osm_place_s;

namespace {

constexpr char kSource[] = "osm_metadata_query";
constexpr char kLookUp[] = "koOsmInfo";

constexpr char kTool[] = "/usr/local/medialibrary/bin/osm_info";
constexpr std::size_t kCommandSize = 1024;
constexpr int kAttempts = 3;

// Eight decimals, with a point whatever the host's locale says.
std::string decimal(double value) {
  std::array<char, 400> digits;
  const auto end =
      std::to_chars(digits.begin(), digits.end(), value, std::chars_format::fixed, 8).ptr;
  return {digits.begin(), end};
}

std::string commandFor(const osm_param_s& param) {
  std::string command = std::string(kTool) + " lat=" + decimal(param.lat) +
                        " lon=" + decimal(param.lon) + " zoom=" + std::to_string(param.zoom);
  command.resize(std::min(command.size(), kCommandSize - 1));
  return command;
}

int lookUp(const osm_param_s& param, osm_place_s& place) {
  const std::string command = commandFor(param);
  KOLUM_LOG_AS(kSource, kLookUp, "@@@@@@@@cmd:%s", command.c_str());
  int result = PLACE_NO_ANSWER;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    result = parseOsmInfo(command.c_str(), place);
    if (result == PLACE_FOUND) return result;
    KOLUM_LOG_AS(kSource, kLookUp, "retry:%d", attempt);
    // After the last attempt, too: wanted, it keeps hosts from asking a tool in trouble at once
    // again.
    unsigned int seconds = 0;
    setWaitSecond(attempt, seconds);
    sleep(seconds);
  }
  return result;
}

}  // namespace

int koOsmInfo(osm_param_s& param, osm_place_s& place) noexcept {
  try {
    return lookUp(param, place);
  } catch (const std::exception&) {
    return PLACE_NO_ANSWER;
  }
}

int parseOsmInfo(const char* command, osm_place_s& place) noexcept {
  try {
    if (command == nullptr) return PLACE_NO_ANSWER;
    const auto output = kolum::outputOf(command);
    return output ? geocode::readAnswer(*output, place) : PLACE_NO_ANSWER;
  } catch (const std::exception&) {
    return PLACE_NO_ANSWER;
  }
}

// By value, as hosts were built against it.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
int parseAddressXml(XMLNode node, std::vector<osm_addr_unit_s>& units) noexcept {
  try {
    for (const XMLNode& part : node.getChildNodes()) {
      const std::string name = part.getName();
      const std::string value = part.getText();
      if (!name.empty() && !value.empty()) units.push_back({name, value});
    }
    return 0;
  } catch (const std::exception&) {
    return 0;
  }
}

// Seeding on every call is wanted: processes that fail together wait alike within a second.
// NOLINTBEGIN(cert-msc30-c,cert-msc50-cpp,cert-msc51-cpp): no secret, only a delay
void setWaitSecond(int attempt, unsigned int& seconds) noexcept {
  constexpr double kLongest = RAND_MAX;
  const auto longest = static_cast<unsigned>(std::min(std::pow(2.0, attempt), kLongest));
  std::srand(static_cast<unsigned>(std::time(nullptr)));
  seconds = static_cast<unsigned>(std::rand()) % (longest + 1);
}
// NOLINTEND(cert-msc30-c,cert-msc50-cpp,cert-msc51-cpp)
