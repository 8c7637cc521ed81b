#include "base/moment.h"

#include <gtest/gtest.h>

namespace kolum::test {
namespace {

constexpr std::int64_t kSecond = 1'000'000'000;

TEST(MomentText, IsInUtcWithAsManyDecimalsAsNeeded) {
  EXPECT_EQ(momentText(0), "1970-01-01T00:00:00Z");
  EXPECT_EQ(momentText(1433664550 * kSecond), "2015-06-07T08:09:10Z");
  EXPECT_EQ(momentText(1433664550 * kSecond + 500'000'000), "2015-06-07T08:09:10.5Z");
  EXPECT_EQ(momentText(1433664550 * kSecond + 1), "2015-06-07T08:09:10.000000001Z");
}

TEST(MomentText, CountsBackwardsBefore1970) {
  EXPECT_EQ(momentText(-1), "1969-12-31T23:59:59.999999999Z");
  EXPECT_EQ(momentText(INT64_MIN), "1677-09-21T00:12:43.145224192Z");
}

TEST(MomentOf, ReadsWhatMomentTextWrites) {
  for (const std::int64_t moment :
       {std::int64_t{0}, std::int64_t{-1}, 1433664550 * kSecond, 1433664550 * kSecond + 123'000'000,
        INT64_MAX, INT64_MIN + kSecond})
    EXPECT_EQ(momentOf(momentText(moment)), moment);
}

TEST(MomentOf, RefusesEverythingElse) {
  for (const char* text :
       {"", "Z", "2015", "2015-06-07", "2015-06-07T08:09:10", "2015-06-07T08:09:10+01:00",
        "2015-02-30T00:00:00Z", "2015-13-01T00:00:00Z", "2015-06-07T24:00:00Z",
        "2015-06-07T08:60:10Z", "2015-06-07T08:09:60Z", "2015-06-07T08:09:10.Z",
        "2015-06-07T08:09:10.1234567890Z", "2015-06-07T08:09:10.-1Z", "2015-06-07 08:09:10Z",
        "+015-06-07T08:09:10Z", "2015-06-07T08:09:10Z ", "9999-06-07T08:09:10Z",
        "0001-06-07T08:09:10Z"})
    EXPECT_EQ(momentOf(text), std::nullopt) << text;
}

}  // namespace
}  // namespace kolum::test
