#include <gtest/gtest.h>
#include <kolum/datetime.h>

#include <chrono>
#include <ctime>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

struct Checked {
  int result;
  std::string text;
  bool operator==(const Checked&) const = default;
};

void PrintTo(const Checked& checked, std::ostream* out) {
  *out << checked.result << " \"" << checked.text << "\"";
}

Checked check(std::string text) {
  const int result = isYYYYMMDD(text.data());
  return {result, text};
}

TEST(CheckCharRange, AcceptsDigitsUpToTheLargest) {
  for (char max = '1'; max <= '9'; ++max)
    for (int c = -128; c < 128; ++c)
      ASSERT_EQ(checkCharRange(static_cast<char>(c), max), c >= '0' && c <= max ? 1 : 0)
          << c << " up to " << max;
}

TEST(CheckCharRange, AcceptsAnyNonDigitAsSeparator) {
  for (int c = -128; c < 128; ++c)
    ASSERT_EQ(checkCharRange(static_cast<char>(c), '0'), c >= '0' && c <= '9' ? 0 : 1) << c;
}

TEST(IsYYYYMMDD, AcceptsYearFirstUnchanged) {
  for (const char* text : {"2015-06-07 10:00", "2015:06:07 10:00", "2015/06/07T1", "2015x06y07zz",
                           "2015-06-07\xFF\xFE", "0000-00-00 00"})
    EXPECT_EQ(check(text), (Checked{1, text}));
}

TEST(IsYYYYMMDD, ReordersDayFirst) {
  EXPECT_EQ(check("07-06-2015 10:00"), (Checked{1, "2015-06-07 10:00"}));
  // The separators are swapped, too.
  EXPECT_EQ(check("07.06/2015 10:00"), (Checked{1, "2015/06.07 10:00"}));
}

// Photos without a time are sorted differently.
TEST(IsYYYYMMDD, RejectsDateWithoutTime) {
  EXPECT_EQ(check("2015-06-07"), (Checked{0, "2015-06-07"}));
  EXPECT_EQ(check("2015-06-07 "), (Checked{0, "2015-06-07 "}));
  EXPECT_EQ(check("2015-06-07 1"), (Checked{1, "2015-06-07 1"}));
}

TEST(IsYYYYMMDD, RejectsOtherOrdersAndForms) {
  for (const char* text :
       {"06/07/15 10:00", "06-27-2015 10:00", "2015-6-7 10:00:00", "20150607 10:00",
        "2015-20-07 10:00", "2015-06-40 10:00", "07-20-2015 10:00", "40-06-2015 10:00",
        "a015-06-07 10:00", "", "            "})
    EXPECT_EQ(check(text), (Checked{0, text}));
}

TEST(IsYYYYMMDD, ChecksFormOnly) {
  EXPECT_EQ(check("2015-19-39 10:00").result, 1);
  EXPECT_EQ(check("39-19-2015 10:00"), (Checked{1, "2015-19-39 10:00"}));
}

TEST(IsYYYYMMDD, RejectsNull) {
  EXPECT_EQ(isYYYYMMDD(nullptr), 0);
}

TEST(DateTimeStringToSeconds, CountsFromTheEpoch) {
  struct Row {
    const char* text;
    std::int64_t expected;
  };
  const Row rows[] = {
      {"1970:01:01 00:00:00", 0},
      {"1970:01:02 00:00:00", 86400},
      {"1970:01:01 00:00:01", 1},
      {"2000:02:29 00:00:00", 951782400},
      {"2000:03:01 00:00:00", 951868800},
      {"1969:12:31 23:59:59", -1},
      {"1969:01:01 00:00:00", -31536000},
      {"1968:01:01 00:00:00", -63158400},
      {"2015-06-07T08:09:10.000000Z", 1433664550},
      {"2100-03-01 00:00:00", 4107542400},
      {"9999-12-31 23:59:59", 253402300799},
  };
  for (const Row& row : rows)
    EXPECT_EQ(DateTimeStringToSeconds(row.text), row.expected) << row.text;
}

TEST(DateTimeStringToSeconds, AgreesWithTheCalendarEveryDay) {
  for (std::time_t day = -200LL * 366 * 86400; day < 200LL * 366 * 86400; day += 86400) {
    std::tm universal = {};
    gmtime_r(&day, &universal);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &universal);
    ASSERT_EQ(DateTimeStringToSeconds(text), day) << text;
  }
}

TEST(DateTimeStringToSeconds, UsesRunsOfDigits) {
  const std::int64_t expected = DateTimeStringToSeconds("2015:06:07 08:09:10");
  EXPECT_EQ(DateTimeStringToSeconds("2015-06-07T08:09:10"), expected);
  EXPECT_EQ(DateTimeStringToSeconds("2015 6 7 8 9 10"), expected);
  EXPECT_EQ(DateTimeStringToSeconds("---2015--6--7--8-9-10"), expected - 10 + 1)
      << "only 20 characters count";
  // Eight digits in a row are one field: the year 20150607.
  EXPECT_EQ(DateTimeStringToSeconds("20150607"), DateTimeStringToSeconds("20150607:00:00"));
}

TEST(DateTimeStringToSeconds, StopsAfterTheSixthField) {
  EXPECT_EQ(DateTimeStringToSeconds("1970:1:1 0:0:1:9:9"), 1);
}

TEST(DateTimeStringToSeconds, AcceptsValuesOutOfRange) {
  EXPECT_EQ(DateTimeStringToSeconds("1970:01:00 00:00:00"), -86400) << "day 0";
  EXPECT_EQ(DateTimeStringToSeconds("1970"), -86400) << "no month, no day";
  EXPECT_EQ(DateTimeStringToSeconds("1970:13:01 00:00:00"), 334 * 86400)
      << "at most eleven months are counted";
  EXPECT_EQ(DateTimeStringToSeconds("1970:99:01 00:00:00"), 334 * 86400);
  EXPECT_EQ(DateTimeStringToSeconds("1970:01:01 99:99:99"), 99 * 3600 + 99 * 60 + 99);
}

TEST(DateTimeStringToSeconds, ReturnsYearZeroForTextWithoutDigits) {
  // 1970 years, 478 of them leap years, and day 0.
  const std::int64_t expected = -(1970LL * 365 + 478) * 86400 - 86400;
  EXPECT_EQ(DateTimeStringToSeconds(""), expected);
  EXPECT_EQ(DateTimeStringToSeconds("no date"), expected);
  EXPECT_EQ(DateTimeStringToSeconds(nullptr), expected);
}

TEST(DateTimeStringToSeconds, WrapsSecondsWithinTheYearTo32Bits) {
  // 24856 days are 2147558400 seconds, which wraps to -2147408896.
  EXPECT_EQ(DateTimeStringToSeconds("1970:01:24857 00:00"), -2147408896);
}

TEST(DateTimeStringToSeconds, IsQuickForAbsurdYears) {
  for (const char* text : {"2147483647:01:01", "99999999999999999999", "4294967295", "2147483648"})
    DateTimeStringToSeconds(text);
  EXPECT_EQ(DateTimeStringToSeconds("2000001970:01:01 0"), 2000000000LL / 400 * 146097 * 86400);
}

TEST(GetUniqueNumer, NeverReturnsTheSameTwice) {
  const auto now = static_cast<unsigned>(std::time(nullptr));
  const unsigned first = getUniqueNumer();
  EXPECT_GE(first, now);
  EXPECT_EQ(getUniqueNumer(), first + 1);
  EXPECT_EQ(getUniqueNumer(), first + 2);
}

TEST(GetUniqueNumer, CatchesUpWithTheClock) {
  const std::time_t last = getUniqueNumer();
  while (std::time(nullptr) <= last + 1) std::this_thread::sleep_for(std::chrono::milliseconds(50));
  const std::time_t now = std::time(nullptr);
  EXPECT_GE(getUniqueNumer(), now);
}

TEST(GetUniqueNumer, IsUniqueAcrossThreads) {
  std::vector<std::vector<unsigned>> numbers(8);
  std::vector<std::thread> threads;
  for (auto& mine : numbers)
    threads.emplace_back([&mine] {
      for (int i = 0; i < 1000; ++i) mine.push_back(getUniqueNumer());
    });
  for (std::thread& thread : threads) thread.join();
  std::set<unsigned> all;
  for (const auto& mine : numbers) all.insert(mine.begin(), mine.end());
  EXPECT_EQ(all.size(), 8000U);
}

}  // namespace
