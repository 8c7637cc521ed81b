#include <kolum/config.h>

#include "api/guarded.h"
#include "base/log.h"
#include "config/config.h"

namespace api = kolum::api;

int parseConfig(lumCfg_s* cfg) noexcept {
  if (cfg == nullptr) {
    KOLUM_LOG("configParser", "no config from parameter.\n");
    return 1;
  }
  return api::guarded(1, [&] { return kolum::config::parse(*cfg); });
}

// By value, as hosts were built against it.
// cppcheck-suppress passedByValue
// NOLINTNEXTLINE(performance-unnecessary-value-param)
int updateConfig(std::string section, std::string key, std::string value) noexcept {
  return api::guarded(1, [&] { return kolum::config::update(section, key, value); });
}
