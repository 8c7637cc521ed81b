#include <kolum/isolation.h>

#include <string>

#include "api/guarded.h"
#include "base/log.h"
#include "isolation/isolation.h"

using namespace kolum;

static_assert(static_cast<int>(isolation::Mode::kOff) == KOLUM_ISOLATION_OFF);
static_assert(static_cast<int>(isolation::Mode::kOn) == KOLUM_ISOLATION_ON);
static_assert(static_cast<int>(isolation::Mode::kStrict) == KOLUM_ISOLATION_STRICT);

unsigned int KoLUM_SetIsolation(int mode) {
  return api::guarded(1U, [&] {
    if (mode < KOLUM_ISOLATION_OFF || mode > KOLUM_ISOLATION_STRICT) return 1U;
    const auto before = isolation::settings();
    auto settings = before;
    settings.mode = static_cast<isolation::Mode>(mode);
    isolation::configure(settings);
    if (settings.mode == isolation::Mode::kOff) return 0U;
    std::string why;
    if (isolation::activeLayers(why)) return 0U;
    KOLUM_LOG_AS(kMediaSource, "KoLUM_SetIsolation", "no isolation: %s", why.c_str());
    isolation::configure(before);
    return 1U;
  });
}
