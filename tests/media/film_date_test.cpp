#include "media/film_date.h"

#include <gtest/gtest.h>

#include <string>

namespace kolum::media {

namespace {

std::string shown(const std::optional<FilmDate>& date) {
  if (!date) return "none";
  std::string text = std::to_string(date->year);
  if (date->month) text += "-" + std::to_string(*date->month);
  if (date->day) text += "-" + std::to_string(*date->day);
  if (date->time) {
    const FilmTime& time = *date->time;
    text += " " + std::to_string(time.hour) + ":" + std::to_string(time.minute) + ":" +
            std::to_string(time.second) + "." + std::to_string(time.millisecond);
  }
  if (date->offset) text += " offset " + std::to_string(*date->offset);
  if (date->certainty == DateCertainty::kExplicit) text += " explicit";
  return text;
}

TEST(FilmDateOf, ReadsEveryForm) {
  const struct {
    const char* text;
    const char* expected;
  } rows[] = {
      {"2015", "2015"},
      {"2015-06", "2015-6"},
      {"2015-06-07", "2015-6-7"},
      {"20150607", "2015-6-7"},
      {"2015:06:07 08:09:10", "2015-6-7 8:9:10.0"},
      {"2015/06/07", "2015-6-7"},
      {"2015-06-07T08:09", "2015-6-7 8:9:0.0"},
      {"2015-06-07 08:09:10", "2015-6-7 8:9:10.0"},
      {"2015-06-07T08:09:10Z", "2015-6-7 8:9:10.0 offset 0 explicit"},
      {"2015-06-07T08:09:10.000000Z", "2015-6-7 8:9:10.0 offset 0 explicit"},
      {"2015-06-07T08:09:10.25+0200", "2015-6-7 8:9:10.250 offset 120 explicit"},
      {"2015-06-07T08:09:10+02:00", "2015-6-7 8:9:10.0 offset 120 explicit"},
      {"2015-06-07T08:09:10-03:30", "2015-6-7 8:9:10.0 offset -210 explicit"},
      {"2015-06-07T08:09:10-08", "2015-6-7 8:9:10.0 offset -480 explicit"},
      {"20150607T080910Z", "2015-6-7 8:9:10.0 offset 0 explicit"},
      {" 2015-06-07", "2015-6-7"},
      {"2016-02-29", "2016-2-29"},
      {"2016-12-31T23:59:60Z", "2016-12-31 23:59:60.0 offset 0 explicit"},
  };
  for (const auto& row : rows) EXPECT_EQ(shown(filmDateOf(row.text)), row.expected) << row.text;
}

TEST(FilmDateOf, LeavesImpossiblePartsOut) {
  const struct {
    const char* text;
    const char* expected;
  } rows[] = {
      {"", "none"},
      {"0000", "none"},
      {"0000-06-07", "none"},
      {"201", "none"},
      {"-2015", "none"},
      {"yesterday", "none"},
      {"2015-00-00", "2015"},
      {"2015-13-01", "2015"},
      {"2015-02-29", "2015-2"},
      {"2015-06-31", "2015-6"},
      {"2015-06-07T24:00:00", "2015-6-7"},
      {"2015-06-07T08:61:00", "2015-6-7"},
      {"2015-06-07T08:09:10+15:00", "2015-6-7 8:9:10.0"},
      {"2015-06-07T08:09:10+", "2015-6-7 8:9:10.0"},
      {"2015-06-07T", "2015-6-7"},
      {"2015 (remastered)", "2015"},
  };
  for (const auto& row : rows) EXPECT_EQ(shown(filmDateOf(row.text)), row.expected) << row.text;
}

TEST(FilmDateOf, SurvivesEndlessDigits) {
  EXPECT_EQ(shown(filmDateOf("2015-06-07T08:09:10." + std::string(100'000, '9'))),
            "2015-6-7 8:9:10.999");
  EXPECT_EQ(shown(filmDateOf(std::string(100'000, '9'))), "9999");
  EXPECT_EQ(shown(filmDateOf(std::string(100'000, ' '))), "none");
}

}  // namespace

}  // namespace kolum::media
