#include "probe/creation.h"

#include <cstdio>
#include <ctime>

#include "media/dates.h"

namespace kolum::probe {

namespace {

constexpr int kFirstTmYear = 1900;

std::string yearMonthText(int year, int month) {
  char text[32];
  std::snprintf(text, sizeof text, "%d-%02d", year, month);
  return text;
}

std::string dateText(int year, int month, int day) {
  char text[48];
  std::snprintf(text, sizeof text, "%s-%02d", yearMonthText(year, month).c_str(), day);
  return text;
}

// The local zone's offset at this moment, including daylight saving time.
std::int64_t localOffsetNow() {
  constexpr std::int64_t kDaylightSaving = 3600;
  const std::time_t now = std::time(nullptr);
  std::tm universal = {};
  gmtime_r(&now, &universal);
  // Read back as local time without daylight saving time: the difference is the standard offset.
  const std::time_t readBack = std::mktime(&universal);
  // After mktime, which applies a change of TZ; localtime_r alone does not.
  std::tm local = {};
  localtime_r(&now, &local);
  return now - readBack + (local.tm_isdst > 0 ? kDaylightSaving : 0);
}

}  // namespace

std::optional<Creation> creationOfStream(const std::string& value) {
  std::string text = value;
  if (!media::normalizeDate(text.data())) return std::nullopt;
  Creation creation;
  creation.time = media::secondsOfDate(text.data()) + localOffsetNow();

  const std::time_t time = creation.time;
  std::tm universal = {};
  if (gmtime_r(&time, &universal) != nullptr) {
    const int year = universal.tm_year + kFirstTmYear;
    creation.yearMonth = yearMonthText(year, universal.tm_mon + 1);
    creation.date = dateText(year, universal.tm_mon + 1, universal.tm_mday);
  }
  return creation;
}

Creation creationOfQuickTime(const std::string& value) {
  std::tm parsed = {};
  strptime(value.c_str(), "%Y-%m-%dT%T.", &parsed);
  // mktime normalises the fields, and in summer that may move them to the next day; the texts keep
  // the stored date.
  std::tm normalised = parsed;
  Creation creation;
  creation.time = std::mktime(&normalised);
  const int year = parsed.tm_year + kFirstTmYear;
  creation.year = year;
  creation.yearMonth = yearMonthText(year, parsed.tm_mon + 1);
  creation.date = dateText(year, parsed.tm_mon + 1, parsed.tm_mday);
  return creation;
}

}  // namespace kolum::probe
