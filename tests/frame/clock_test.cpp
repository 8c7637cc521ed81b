// A clock that cannot be read: the program's own clock_gettime replaces the C library's.
#include <gtest/gtest.h>
#include <kolum/frame.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "support/appliance_sandbox.h"

namespace {

bool clockFails = false;

}  // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
  if (!clockFails) return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
  errno = EINVAL;
  return -1;
}

namespace {

TEST(TimedWaitNotification, WaitsWithoutTimeoutWhenTheClockFails) {
  if (const auto why = kolum::test::sandboxUnavailable()) GTEST_SKIP() << *why;
  kolum::test::runInAppliance([] {
    clockFails = true;
    EXPECT_EQ(KoLUM_TimedWaitNotification(0), 0) << "the wait fails: nothing is open";
    ASSERT_EQ(KoLUM_Init(nullptr), 0);
    ASSERT_EQ(KoLUM_Notification(), 0);
    EXPECT_EQ(KoLUM_TimedWaitNotification(0), 0);
    clockFails = false;
    EXPECT_EQ(KoLUM_TimedWaitNotification(0), 1) << "the post was taken";
  });
}

}  // namespace
