#include "probe/creation.h"

#include <gtest/gtest.h>

#include <ctime>

#include "support/child_process.h"

namespace kolum::probe {

namespace {

using test::runInChild;

constexpr std::int64_t kHour = 3600;
// 2015-06-07 08:09:10 UTC.
constexpr std::int64_t kSummerMorning = 1433664550;

// The current offset of the local time zone from universal time.
std::int64_t offsetNow() {
  const std::time_t now = std::time(nullptr);
  std::tm local = {};
  localtime_r(&now, &local);
  return local.tm_gmtoff;
}

TEST(StreamCreation, IsShiftedByTheZonesOffset) {
  runInChild(
      [] {
        const auto creation = creationOfStream("2015-06-07T08:09:10.000000Z");
        ASSERT_TRUE(creation.has_value());
        EXPECT_EQ(creation->time, kSummerMorning + 9 * kHour);
        EXPECT_EQ(creation->yearMonth, "2015-06");
        EXPECT_EQ(creation->date, "2015-06-07");
        EXPECT_FALSE(creation->year.has_value());
      },
      {{"TZ", "Asia/Tokyo"}});
}

TEST(StreamCreation, IsUnchangedInUniversalTime) {
  runInChild(
      [] {
        const auto creation = creationOfStream("2015-06-07T08:09:10.000000Z");
        ASSERT_TRUE(creation.has_value());
        EXPECT_EQ(creation->time, kSummerMorning);
      },
      {{"TZ", "UTC"}});
}

// The offset is that of the time of the probe, not of the date: if daylight saving is in effect
// now, it adds an hour, whatever the season of the file. Hosts' databases hold such times.
TEST(StreamCreation, UsesTheDaylightSavingAtProbeTime) {
  // Zones in which daylight saving is in effect today, or is not.
  const std::time_t now = std::time(nullptr);
  std::tm today = {};
  gmtime_r(&now, &today);
  const int day = today.tm_yday;
  const auto zone = [](int start, int end) {
    return "XST-1XDT-2," + std::to_string((start + 365) % 365) + "/0," +
           std::to_string((end + 365) % 365) + "/0";
  };
  for (const bool isSummer : {true, false}) {
    SCOPED_TRACE(isSummer ? "in daylight saving" : "in standard time");
    const std::string tz = isSummer ? zone(day - 30, day + 30) : zone(day + 30, day + 60);
    runInChild(
        [isSummer] {
          EXPECT_EQ(offsetNow(), isSummer ? 2 * kHour : kHour);
          for (const char* date : {"2015-06-07T08:09:10.000000Z", "2015-12-07T08:09:10.000000Z"}) {
            const auto creation = creationOfStream(date);
            ASSERT_TRUE(creation.has_value());
            const std::int64_t universal =
                date[5] == '0' ? kSummerMorning : kSummerMorning + 183 * 24 * kHour;
            EXPECT_EQ(creation->time, universal + offsetNow()) << date;
          }
        },
        {{"TZ", tz}});
  }
}

TEST(StreamCreation, FollowsAChangeOfTheZone) {
  runInChild(
      [] {
        const char* date = "2015-06-07T08:09:10.000000Z";
        EXPECT_EQ(creationOfStream(date)->time, kSummerMorning);
        setenv("TZ", "Asia/Tokyo", 1);
        EXPECT_EQ(creationOfStream(date)->time, kSummerMorning + 9 * kHour);
      },
      {{"TZ", "UTC"}});
}

TEST(StreamCreation, CarriesTheDateOverMidnight) {
  runInChild(
      [] {
        const auto creation = creationOfStream("2015-12-31T23:30:00.000000Z");
        ASSERT_TRUE(creation.has_value());
        EXPECT_EQ(creation->yearMonth, "2016-01");
        EXPECT_EQ(creation->date, "2016-01-01");
      },
      {{"TZ", "Asia/Tokyo"}});
}

TEST(StreamCreation, ReadsDayFirstDates) {
  runInChild(
      [] {
        const auto creation = creationOfStream("07-06-2015 08:09:10");
        ASSERT_TRUE(creation.has_value());
        EXPECT_EQ(creation->time, kSummerMorning);
        EXPECT_EQ(creation->date, "2015-06-07");
      },
      {{"TZ", "UTC"}});
}

TEST(StreamCreation, RejectsNonDates) {
  for (const char* text : {"", "yesterday", "2015-06-07", "06/07/15 10:00", "\xFF\xFE\xFD"})
    EXPECT_FALSE(creationOfStream(text).has_value()) << text;
}

TEST(StreamCreation, UsesTheBeginningOfVeryLongTags) {
  const auto creation = creationOfStream("2015-06-07 08:09:10" + std::string(100'000, '9'));
  EXPECT_TRUE(creation.has_value());
}

TEST(QuickTimeCreation, IsReadAsLocalTime) {
  runInChild(
      [] {
        const Creation creation = creationOfQuickTime("2015-06-07T08:09:10+0200");
        EXPECT_EQ(creation.time, kSummerMorning - 9 * kHour);
        EXPECT_EQ(creation.year, 2015);
        EXPECT_EQ(creation.yearMonth, "2015-06");
        EXPECT_EQ(creation.date, "2015-06-07");
      },
      {{"TZ", "Asia/Tokyo"}});
}

// The broken-down time says that no daylight saving is in effect, so a summer date becomes an hour
// later than the local clock showed. Hosts' databases hold such times.
TEST(QuickTimeCreation, TreatsSummerDatesAsStandardTime) {
  runInChild(
      [] {
        const Creation creation = creationOfQuickTime("2015-06-07T08:09:10.");
        EXPECT_EQ(creation.time, kSummerMorning - kHour);
      },
      {{"TZ", "CET-1CEST,M3.5.0,M10.5.0/3"}});
}

TEST(QuickTimeCreation, KeepsTheDate) {
  runInChild([] { EXPECT_EQ(creationOfQuickTime("2015-06-07T23:30:00.").date, "2015-06-07"); },
             {{"TZ", "CET-1CEST,M3.5.0,M10.5.0/3"}});
}

TEST(QuickTimeCreation, ParsesAsMuchTextAsPossible) {
  runInChild(
      [] {
        EXPECT_EQ(creationOfQuickTime("2015-06").yearMonth, "2015-06");
        EXPECT_EQ(creationOfQuickTime("2015-06").date, "2015-06-00");
        EXPECT_EQ(creationOfQuickTime("no date").year, 1900);
        EXPECT_EQ(creationOfQuickTime("").date, "1900-01-00");
      },
      {{"TZ", "UTC"}});
}

}  // namespace

}  // namespace kolum::probe
