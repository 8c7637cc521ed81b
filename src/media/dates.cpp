#include "media/dates.h"

#include <kolum/host.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <ctime>
#include <string_view>

namespace kolum::media {

namespace {

constexpr std::size_t kDateLength = 10;
// A date alone is rejected: a time is expected to follow.
constexpr std::size_t kShortestDateTime = 12;

// The largest digit of each position; '0' marks a separator.
constexpr std::string_view kYearFirst = "9999019039";
constexpr std::string_view kDayFirst = "3901909999";
static_assert(kYearFirst.size() == kDateLength && kDayFirst.size() == kDateLength);

// For each position of a year-first date, the position of that character in a day-first one.
constexpr std::array<std::size_t, kDateLength> kDayFirstSource = {6, 7, 8, 9, 5, 3, 4, 2, 0, 1};

bool fits(const char* date, std::string_view pattern) {
  for (std::size_t i = 0; i < pattern.size(); ++i)
    if (!fitsDate(date[i], pattern[i])) return false;
  return true;
}

constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// Year, month, day, hour, minute, second.
using Fields = std::array<unsigned, 6>;

// Fields have 32 bits and wrap, as one of 20 digits in a hostile text does.
Fields readFields(const char* text) {
  constexpr std::size_t kLongestDateTime = 20;
  Fields fields = {};
  std::size_t field = 0;
  bool inDigits = false;
  // cppcheck assumes a short literal here; the text ends before the limit.
  // cppcheck-suppress arrayIndexOutOfBoundsCond
  for (std::size_t i = 0; i < kLongestDateTime && text[i] != '\0' && field < fields.size(); ++i) {
    if (isDigit(text[i])) {
      fields[field] = fields[field] * 10 + static_cast<unsigned>(text[i] - '0');
      inDigits = true;
    } else if (inDigits) {
      ++field;
      inDigits = false;
    }
  }
  return fields;
}

constexpr unsigned kSecondsPerDay = 86400;

std::int64_t daysOfYear(int year) {
  return IsLeapYear(year) != 0 ? 366 : 365;
}

unsigned secondsWithinYear(const Fields& fields) {
  constexpr std::array<unsigned, 11> kMonthDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30};
  const auto [year, month, day, hour, minute, second] = fields;
  unsigned days = day - 1;
  const bool isNegativeMonth = static_cast<int>(month) < 0;
  for (std::size_t i = 0; i < kMonthDays.size() && !isNegativeMonth && i + 1 < month; ++i) {
    constexpr std::size_t kFebruary = 1;
    days += kMonthDays[i];
    if (i == kFebruary && IsLeapYear(static_cast<int>(year)) != 0) ++days;
  }
  return days * kSecondsPerDay + hour * 3600 + minute * 60 + second;
}

// Days from the start of year FIRST to the start of year LAST. Whole calendar cycles are counted at
// once, so that absurd years take no longer than others.
std::int64_t daysBetween(std::int64_t first, std::int64_t last) {
  constexpr std::int64_t kCycleYears = 400;
  constexpr std::int64_t kCycleDays = 146097;
  const std::int64_t cycles = (last - first) / kCycleYears;
  std::int64_t days = cycles * kCycleDays;
  for (std::int64_t year = first + cycles * kCycleYears; year < last; ++year)
    days += daysOfYear(static_cast<int>(year));
  return days;
}

}  // namespace

bool fitsDate(char c, char max) {
  if (max == '0') return !isDigit(c);
  const auto value = static_cast<signed char>(c);
  return value >= '0' && value <= static_cast<signed char>(max);
}

bool normalizeDate(char* text) {
  if (std::strlen(text) < kShortestDateTime) return false;
  if (fits(text, kYearFirst)) return true;
  if (!fits(text, kDayFirst)) return false;
  std::array<char, kDateLength> yearFirst = {};
  std::transform(kDayFirstSource.begin(), kDayFirstSource.end(), yearFirst.begin(),
                 [&](std::size_t source) { return text[source]; });
  if (!fits(yearFirst.data(), kYearFirst)) return false;
  std::copy(yearFirst.begin(), yearFirst.end(), text);
  return true;
}

std::int64_t secondsOfDate(const char* text) {
  constexpr int kEpochYear = 1970;
  const Fields fields = readFields(text);
  const auto year = static_cast<int>(fields[0]);
  const std::int64_t withinYear = static_cast<int>(secondsWithinYear(fields));
  const std::int64_t days =
      year >= kEpochYear ? daysBetween(kEpochYear, year) : -daysBetween(year, kEpochYear);
  return withinYear + days * std::int64_t{kSecondsPerDay};
}

unsigned uniqueNumber() {
  static std::atomic<unsigned> counter{0};
  const auto now = static_cast<unsigned>(static_cast<int>(std::time(nullptr)));
  unsigned last = counter.load();
  unsigned next = 0;
  do {
    next = last < now ? now : last + 1;
  } while (!counter.compare_exchange_weak(last, next));
  return next;
}

}  // namespace kolum::media
