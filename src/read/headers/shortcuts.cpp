#include "read/headers/shortcuts.h"

#include <atomic>

namespace kolum::headers {

namespace {

std::atomic<bool> isAllowedNow = true;

}  // namespace

bool mayTakeShortcuts() {
  return isAllowedNow;
}

void allowShortcuts(bool isAllowed) {
  isAllowedNow = isAllowed;
}

}  // namespace kolum::headers
