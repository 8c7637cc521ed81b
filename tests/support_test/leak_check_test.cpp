#include "support/leak_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support/appliance_sandbox.h"
#include "support_test/failing_body_run.h"

namespace kolum::test {

namespace {

using ::testing::HasSubstr;

struct Case {
  std::string body;
  std::string left;
};

void expectFailure(const Case& test) {
  SCOPED_TRACE(test.body);
  const RunResult result = runFailingBody(test.body);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, HasSubstr("[  FAILED  ] " + test.body));
  EXPECT_THAT(result.out, HasSubstr("left: " + test.left));
}

TEST(LeakCheck, FailsTheTestThatLeavesSomething) {
  expectFailure({"Left.Descriptor", "descriptor"});
  expectFailure({"Left.Child", "child process"});
}

TEST(LeakCheck, FailsTheBodyThatLeavesSomethingInItsProcess) {
  expectFailure({"LeftInChild.Descriptor", "descriptor"});
  expectFailure({"LeftInChild.Child", "child process"});
}

TEST(LeakCheck, FailsTheBodyThatLeavesSomethingInItsSandbox) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  expectFailure({"LeftInSandbox.Descriptor", "descriptor"});
  expectFailure({"LeftInSandbox.Mount", "mount"});
  expectFailure({"LeftInSandbox.MountFolder", "folder /tmp/Media_mount_1"});
}

}  // namespace

}  // namespace kolum::test
