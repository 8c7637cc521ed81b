// Runs the bodies that must fail, and checks how their failures are reported.
#ifndef KOLUM_TESTS_SUPPORT_TEST_FAILING_BODY_RUN_H
#define KOLUM_TESTS_SUPPORT_TEST_FAILING_BODY_RUN_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support/child_process.h"

namespace kolum::test {

#ifdef KOLUM_SANITIZED_ADDRESS
constexpr bool kHasAddressSanitizer = true;
#else
constexpr bool kHasAddressSanitizer = false;
#endif

// This process may run a part of its tests only; that program runs the one that it is asked for.
inline RunResult runFailingBody(const std::string& name) {
  return run({KOLUM_FAILING_BODIES, "--gtest_filter=" + name},
             {.environment = {{"GTEST_TOTAL_SHARDS", "1"}, {"GTEST_SHARD_INDEX", "0"}}});
}

inline void expectFailure(const std::string& name, const std::string& said) {
  SCOPED_TRACE(name);
  const RunResult result = runFailingBody(name);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, testing::HasSubstr(said));
  EXPECT_THAT(result.out, testing::HasSubstr("[  FAILED  ] " + name));
}

inline void expectSkipped(const std::string& name) {
  const RunResult result = runFailingBody(name);
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, testing::HasSubstr("[  SKIPPED ] " + name));
}

inline void expectSanitizerReport(const std::string& name) {
  SCOPED_TRACE(name);
  const RunResult result = runFailingBody(name);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, testing::HasSubstr("[  FAILED  ] " + name));
  EXPECT_THAT(result.err, testing::HasSubstr("Sanitizer"));
}

}  // namespace kolum::test

#endif
