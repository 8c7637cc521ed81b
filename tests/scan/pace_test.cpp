#include "scan/pace.h"

#include <gtest/gtest.h>

namespace kolum::test {
namespace {

using scan::Pace;
using namespace std::chrono_literals;

void read(Pace& pace, int files, Pace::Duration waiting, std::uint64_t bytes = 0) {
  for (int i = 0; i < files; ++i) pace.finished(waiting, bytes);
}

TEST(Pace, BeginsWithAllJobs) {
  const Pace pace(4);
  EXPECT_EQ(pace.jobs(), 4U);
  EXPECT_EQ(pace.pause(), Pace::Duration::zero());
  EXPECT_FALSE(pace.isSlow());
}

TEST(Pace, StaysWhileFilesTakeAsLongAsEver) {
  Pace pace(4);
  read(pace, 1000, 100ms);
  EXPECT_EQ(pace.jobs(), 4U);
}

TEST(Pace, BacksOffWhenReadsGetSlow) {
  Pace pace(4);
  read(pace, 100, 5ms);
  read(pace, 8, 400ms);
  EXPECT_EQ(pace.jobs(), 2U);
  read(pace, 8, 400ms);
  EXPECT_EQ(pace.jobs(), 1U);
  EXPECT_EQ(pace.pause(), Pace::Duration::zero());
  read(pace, 50, 400ms);
  EXPECT_GT(pace.pause(), 100ms);
  EXPECT_LE(pace.pause(), 1s);
}

TEST(Pace, ComesBackWhenReadsAreFastAgain) {
  Pace pace(4);
  read(pace, 100, 5ms);
  read(pace, 100, 400ms);
  ASSERT_TRUE(pace.isSlow());
  read(pace, 200, 5ms);
  EXPECT_FALSE(pace.isSlow());
  EXPECT_EQ(pace.jobs(), 4U);
}

TEST(Pace, NeverPausesLong) {
  Pace pace(1);
  read(pace, 100, 1ms);
  read(pace, 100, 60s);
  EXPECT_EQ(pace.pause(), 1s);
}

TEST(Pace, DoesNotMistakeLargeFilesForASlowDisk) {
  Pace pace(4);
  read(pace, 100, 5ms, 10'000);
  read(pace, 100, 205ms, 20'000'000);
  EXPECT_FALSE(pace.isSlow());
}

TEST(Pace, IgnoresDifferencesThatNobodyNotices) {
  Pace pace(4);
  read(pace, 100, 10us);
  read(pace, 100, 20ms);
  EXPECT_FALSE(pace.isSlow());
}

TEST(Pace, SurvivesClocksThatGoBackwards) {
  Pace pace(2);
  read(pace, 100, -5s);
  EXPECT_EQ(pace.jobs(), 2U);
}

}  // namespace
}  // namespace kolum::test
