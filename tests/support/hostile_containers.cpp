#include "support/hostile_bytes.h"
#include "support/hostile_media.h"
#include "support/mp4_builder.h"

namespace kolum::test {

HostileFiles hostileContainers() {
  return {};
}

}  // namespace kolum::test
