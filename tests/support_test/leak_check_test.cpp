#include "support/leak_check.h"

#include <gtest/gtest.h>

#include "support/appliance_sandbox.h"
#include "support_test/failing_body_run.h"

namespace kolum::test {

namespace {

TEST(LeakCheck, FailsTestThatLeaks) {
  expectFailure("Left.Descriptor", "left: descriptor");
  expectFailure("Left.Child", "left: child process");
}

TEST(LeakCheck, FailsBodyThatLeaksInItsProcess) {
  expectFailure("LeftInChild.Descriptor", "left: descriptor");
  expectFailure("LeftInChild.Child", "left: child process");
}

TEST(LeakCheck, FailsBodyThatLeaksInItsSandbox) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  expectFailure("LeftInSandbox.Descriptor", "left: descriptor");
  expectFailure("LeftInSandbox.Mount", "left: mount");
  expectFailure("LeftInSandbox.MountFolder", "left: folder /tmp/Media_mount_1");
}

}  // namespace

}  // namespace kolum::test
