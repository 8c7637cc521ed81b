#include "geocode/lookup.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <ctime>

#include "base/appliance.h"
#include "base/child_process.h"
#include "base/log.h"
#include "geocode/osm_answer.h"

namespace kolum::geocode {

namespace {

constexpr char kSource[] = "osm_metadata_query";
constexpr char kLookUp[] = "koOsmInfo";

constexpr std::size_t kCommandSize = 1024;
constexpr int kAttempts = 3;
constexpr std::chrono::seconds kToolTime{60};

// Eight decimals, with a decimal point whatever the host's locale.
std::string decimal(double value) {
  std::array<char, 400> digits;
  const auto end =
      std::to_chars(digits.begin(), digits.end(), value, std::chars_format::fixed, 8).ptr;
  return {digits.begin(), end};
}

std::string commandFor(const osm_param_s& param) {
  std::string command = std::string(kOsmInfoTool) + " lat=" + decimal(param.lat) +
                        " lon=" + decimal(param.lon) + " zoom=" + std::to_string(param.zoom);
  command.resize(std::min(command.size(), kCommandSize - 1));
  return command;
}

}  // namespace

int lookUp(const osm_param_s& param, MediaLibrary::osm_place_s& place) {
  const std::string command = commandFor(param);
  KOLUM_LOG_AS(kSource, kLookUp, "@@@@@@@@cmd:%s", command.c_str());
  int result = PLACE_NO_ANSWER;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    result = ask(command, place);
    if (result == PLACE_FOUND) return result;
    KOLUM_LOG_AS(kSource, kLookUp, "retry:%d", attempt);
    // Also after the last attempt, so that hosts do not ask a struggling tool again at once.
    sleep(pauseOf(attempt));
  }
  return result;
}

int ask(const std::string& command, MediaLibrary::osm_place_s& place) {
  const auto output = outputOfShell(command, kToolTime);
  return output ? readAnswer(*output, place) : PLACE_NO_ANSWER;
}

// Seeded on every call: processes that fail within the same second wait equally long.
// NOLINTBEGIN(cert-msc30-c,cert-msc50-cpp,cert-msc51-cpp): no secret, only a delay
unsigned pauseOf(int attempt) {
  constexpr double kLongest = RAND_MAX;
  const auto longest = static_cast<unsigned>(std::min(std::pow(2.0, attempt), kLongest));
  std::srand(static_cast<unsigned>(std::time(nullptr)));
  return static_cast<unsigned>(std::rand()) % (longest + 1);
}
// NOLINTEND(cert-msc30-c,cert-msc50-cpp,cert-msc51-cpp)

}  // namespace kolum::geocode
