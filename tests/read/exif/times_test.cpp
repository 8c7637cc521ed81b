#include "read/exif/times.h"

#include <gtest/gtest.h>

namespace kolum::exif {

namespace {

using media::PhotoTime;

constexpr auto kStated = media::OffsetOrigin::kStated;

TEST(PhotoTime, IsReadAsExifHasIt) {
  EXPECT_EQ(exifTime("2015:06:07 08:09:10", "05 "), (PhotoTime{.year = 2015,
                                                               .month = 6,
                                                               .day = 7,
                                                               .hasTimeOfDay = true,
                                                               .hour = 8,
                                                               .minute = 9,
                                                               .second = 10,
                                                               .subSecond = "05"}));
  EXPECT_EQ(exifTime("2015-06-07T08:09:10", "")->second, 10);
  EXPECT_FALSE(exifTime("2015:06:07", "")->hasTimeOfDay);
  EXPECT_EQ(exifTime("2015:06:07 08:09:10", "12345678901")->subSecond, "123456789");
  EXPECT_EQ(exifTime("2015:06:07 08:09:10", "x")->subSecond, "");
}

TEST(PhotoTime, IsUnknownIfItMakesNoSense) {
  for (const char* text :
       {"", "    :  :     :  :  ", "0000:00:00 00:00:00", "2015:13:01 00:00:00",
        "2015:02:29 00:00:00", "2015:06:31 00:00:00", "2015:06:07 24:00:00", "2015:06:07 08:60:00",
        "2015:06:07 08:09:60", "-015:06:07 08:09:10", "2015:-6:07 08:09:10", "2015", "2015:06:00",
        "20150607 080910", "2015:06:07 8:9:10"})
    EXPECT_FALSE(exifTime(text, "")) << text;
  EXPECT_TRUE(exifTime("2016:02:29 00:00:00", ""));
}

TEST(PhotoTime, IsReadAsXmpHasIt) {
  EXPECT_EQ(isoTime("2015-06-07T08:09:10.25+02:00"), (PhotoTime{.year = 2015,
                                                                .month = 6,
                                                                .day = 7,
                                                                .hasTimeOfDay = true,
                                                                .hour = 8,
                                                                .minute = 9,
                                                                .second = 10,
                                                                .subSecond = "25",
                                                                .offset = 120,
                                                                .offsetOrigin = kStated}));
  EXPECT_EQ(isoTime("2015"), (PhotoTime{.year = 2015}));
  EXPECT_EQ(isoTime("2015-06"), (PhotoTime{.year = 2015, .month = 6}));
  EXPECT_EQ(isoTime("2015-06-07"), (PhotoTime{.year = 2015, .month = 6, .day = 7}));
  EXPECT_EQ(isoTime("2015-06-07T08:09Z")->offset, 0);
  EXPECT_FALSE(isoTime("2015-06-07T08:09")->offset);
}

TEST(PhotoTime, IsUnknownIfXmpMakesNoSense) {
  for (const char* text : {"", "0000", "2015-00-00", "2015-13", "2015-06-31", "2015-06-07T",
                           "2015-06-07T08", "2015-06-07T25:00", "yesterday", "2015T08:09:10"})
    EXPECT_FALSE(isoTime(text)) << text;
}

TEST(PhotoTime, HasAnOffsetInMinutes) {
  EXPECT_EQ(utcOffset("+02:00"), 120);
  EXPECT_EQ(utcOffset("-03:30"), -210);
  EXPECT_EQ(utcOffset("Z"), 0);
  for (const char* text : {"", "02:00", "+2:00", "+15:00", "-13:00", "+02:60", "+02:00x", "+-2:00"})
    EXPECT_FALSE(utcOffset(text)) << text;
}

PhotoTime timeAt(int day, int hour, int minute, int second = 0) {
  return {.year = 2020,
          .month = 1,
          .day = day,
          .hasTimeOfDay = true,
          .hour = hour,
          .minute = minute,
          .second = second};
}

TEST(PhotoTime, IsComparedWithGpsTime) {
  EXPECT_EQ(offsetBetween(timeAt(2, 1, 0), timeAt(1, 23, 0, 30)), 120);
  EXPECT_EQ(offsetBetween(timeAt(1, 13, 45), timeAt(1, 8, 0)), 345);
  EXPECT_EQ(offsetBetween(timeAt(1, 8, 0), timeAt(1, 8, 1, 59)), 0);
}

// The camera's clock is wrong then, or the position is that of an earlier photo.
TEST(PhotoTime, HasNoOffsetIfGpsTimeFitsNoZone) {
  EXPECT_FALSE(offsetBetween(timeAt(1, 10, 7), timeAt(1, 8, 0)));
  EXPECT_FALSE(offsetBetween(timeAt(1, 10, 15), timeAt(1, 8, 0)));
  EXPECT_FALSE(offsetBetween(timeAt(3, 8, 0), timeAt(1, 8, 0)));
  EXPECT_FALSE(offsetBetween(timeAt(1, 8, 0), timeAt(1, 23, 0)));
}

}  // namespace

}  // namespace kolum::exif
