// Runs one of the bodies that have to fail.
#ifndef KOLUM_TESTS_SUPPORT_TEST_FAILING_BODY_RUN_H
#define KOLUM_TESTS_SUPPORT_TEST_FAILING_BODY_RUN_H

#include <string>

#include "support/child_process.h"

namespace kolum::test {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kHasAddressSanitizer = true;
#elif defined(__has_feature)
constexpr bool kHasAddressSanitizer = __has_feature(address_sanitizer);
#else
constexpr bool kHasAddressSanitizer = false;
#endif

inline RunResult runFailingBody(const std::string& name) {
  return run({KOLUM_FAILING_BODIES, "--gtest_filter=" + name});
}

}  // namespace kolum::test

#endif
