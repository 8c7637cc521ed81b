#include "read/exif/times.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <string>

#include "read/exif/texts.h"

namespace kolum::exif {

namespace {

constexpr unsigned kGpsTimeStamp = 0x0007;
constexpr unsigned kGpsDateStamp = 0x001D;

// Takes numbers and separators from the front of a text.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  bool isDone() const { return text_.empty(); }
  bool failed() const { return failed_; }
  bool take(char c) {
    if (!text_.starts_with(c)) return false;
    text_.remove_prefix(1);
    return true;
  }
  // A number of exactly that many DIGITS.
  int number(std::size_t digits) {
    int value = 0;
    const std::string_view taken = text_.substr(0, digits);
    const auto [end, error] = std::from_chars(taken.data(), taken.data() + taken.size(), value);
    failed_ = failed_ || taken.size() < digits || taken.starts_with('-') || error != std::errc() ||
              end != taken.data() + taken.size();
    text_.remove_prefix(taken.size());
    return value;
  }
  std::string_view digits() {
    const std::string_view found = text_.substr(0, text_.find_first_not_of("0123456789"));
    text_.remove_prefix(found.size());
    return found;
  }
  std::string_view rest() const { return text_; }

 private:
  std::string_view text_;
  bool failed_ = false;
};

bool isDate(const media::PhotoTime& time) {
  if (time.year < 1 || time.year > 9999 || time.month < 0 || time.month > 12) return false;
  if (time.day == 0 || time.month == 0) return time.day == 0;
  return std::chrono::year_month_day(std::chrono::year(time.year),
                                     std::chrono::month(static_cast<unsigned>(time.month)),
                                     std::chrono::day(static_cast<unsigned>(time.day)))
      .ok();
}

bool isTimeOfDay(const media::PhotoTime& time) {
  return time.hour >= 0 && time.hour <= 23 && time.minute >= 0 && time.minute <= 59 &&
         time.second >= 0 && time.second <= 59;
}

// Seconds are nine digits at most; trailing padding is not part of them.
std::string subSecondOf(std::string_view text) {
  constexpr std::size_t kMostDigits = 9;
  return std::string(Scanner(text).digits().substr(0, kMostDigits));
}

std::chrono::sys_seconds pointOf(const media::PhotoTime& time) {
  return std::chrono::sys_days(std::chrono::year_month_day(
             std::chrono::year(time.year), std::chrono::month(static_cast<unsigned>(time.month)),
             std::chrono::day(static_cast<unsigned>(time.day)))) +
         std::chrono::hours(time.hour) + std::chrono::minutes(time.minute) +
         std::chrono::seconds(time.second);
}

constexpr int kWesternmost = -12 * 60;
constexpr int kEasternmost = 14 * 60;

bool isZone(int minutes) {
  if (minutes < kWesternmost || minutes > kEasternmost) return false;
  constexpr int kQuarters[] = {5 * 60 + 45, 8 * 60 + 45, 12 * 60 + 45};
  return minutes % 30 == 0 || std::ranges::find(kQuarters, minutes) != std::end(kQuarters);
}

void setOffset(media::PhotoTime& time, std::optional<int> offset, media::OffsetOrigin origin) {
  if (!offset || time.offset || !time.hasTimeOfDay) return;
  time.offset = offset;
  time.offsetOrigin = origin;
}

struct TimeRow {
  std::string_view group;
  unsigned time;
  unsigned subSecond;
  unsigned offset;
  XmpProperty xmp[2];
  unsigned iptcDate;
  unsigned iptcTime;
};

constexpr TimeRow kTaken = {
    kPhoto, 0x9003, 0x9291, 0x9011, {XmpProperty::kDateCreated, XmpProperty::kDateTimeOriginal},
    55,     60};
constexpr TimeRow kDigitized = {
    kPhoto, 0x9004, 0x9292, 0x9012, {XmpProperty::kCreateDate, XmpProperty::kDateTimeDigitized},
    62,     63};
constexpr TimeRow kModified = {
    kImage, 0x0132, 0x9290, 0x9010, {XmpProperty::kModifyDate, XmpProperty::kDateTime}, 0, 0};

std::optional<media::PhotoTime> iptcTime(const Metadata& metadata, const TimeRow& row) {
  if (row.iptcDate == 0) return std::nullopt;
  const std::string date = metadata.iptcText(row.iptcDate);
  const std::string time = metadata.iptcText(row.iptcTime);
  if (auto both = isoTime(date + "T" + time)) return both;
  return isoTime(date);
}

std::optional<media::PhotoTime> timeOf(const Metadata& metadata, const TimeRow& row) {
  auto time = exifTime(metadata.text(row.group, row.time), metadata.text(kPhoto, row.subSecond));
  if (time)
    setOffset(*time, utcOffset(metadata.text(kPhoto, row.offset)), media::OffsetOrigin::kStated);
  for (const XmpProperty property : row.xmp)
    if (!time) time = isoTime(metadata.xmp().text(property));
  return time ? time : iptcTime(metadata, row);
}

std::optional<media::PhotoTime> gpsTime(const Metadata& metadata) {
  auto time = exifTime(metadata.text(kGps, kGpsDateStamp) + " 00:00:00", "");
  const auto hour = metadata.number(kGps, kGpsTimeStamp, 0);
  const auto minute = metadata.number(kGps, kGpsTimeStamp, 1);
  const auto second = metadata.number(kGps, kGpsTimeStamp, 2);
  if (!time || !hour || !minute || !second) return std::nullopt;
  constexpr double kBeyondAll = 100;
  if (!(*hour < kBeyondAll && *minute < kBeyondAll && *second < kBeyondAll)) return std::nullopt;
  time->hour = static_cast<int>(*hour);
  time->minute = static_cast<int>(*minute);
  time->second = static_cast<int>(*second);
  if (!isTimeOfDay(*time)) return std::nullopt;
  setOffset(*time, 0, media::OffsetOrigin::kStated);
  return time;
}

// Exif's older way, in hours. The first is of the time taken.
std::optional<int> zoneOffset(const Metadata& metadata) {
  constexpr unsigned kTimeZoneOffset = 0x882A;
  auto hours = metadata.integer(kPhoto, kTimeZoneOffset);
  if (!hours) hours = metadata.integer(kImage, kTimeZoneOffset);
  if (!hours || *hours < kWesternmost / 60 || *hours > kEasternmost / 60) return std::nullopt;
  return static_cast<int>(*hours) * 60;
}

struct ClockRow {
  std::string_view group;
  unsigned zone;      // minutes
  unsigned daylight;  // what is neither 0 nor "no"
  int daylightUnit;   // minutes of each
};

constexpr ClockRow kClocks[] = {
    {"CanonTi", 1, 3, 1},   // daylight saving is 60
    {"NikonWt", 0, 2, 60},  // daylight saving is 1
};

std::optional<int> cameraOffset(const Metadata& metadata) {
  for (const ClockRow& row : kClocks) {
    const auto zone = metadata.integer(row.group, row.zone);
    const auto daylight = metadata.integer(row.group, row.daylight).value_or(0);
    if (!zone || *zone < kWesternmost || *zone > kEasternmost) continue;
    if (daylight < 0 || daylight * row.daylightUnit > 120) continue;
    const int offset = static_cast<int>(*zone + daylight * row.daylightUnit);
    if (isZone(offset)) return offset;
  }
  return std::nullopt;
}

std::optional<int> offsetOfOtherTime(const Metadata& metadata) {
  for (const unsigned tag : {kTaken.offset, kDigitized.offset, kModified.offset})
    if (const auto offset = utcOffset(metadata.text(kPhoto, tag))) return offset;
  return std::nullopt;
}

void completeOffset(const Metadata& metadata, std::optional<media::PhotoTime>& time,
                    const std::optional<media::PhotoTime>& gps) {
  if (!time) return;
  setOffset(*time, zoneOffset(metadata), media::OffsetOrigin::kStated);
  setOffset(*time, offsetOfOtherTime(metadata), media::OffsetOrigin::kOtherTime);
  setOffset(*time, cameraOffset(metadata), media::OffsetOrigin::kMakerNote);
  if (gps && time->hasTimeOfDay)
    setOffset(*time, offsetBetween(*time, *gps), media::OffsetOrigin::kGps);
}

}  // namespace

std::optional<media::PhotoTime> exifTime(std::string_view text, std::string_view subSecond) {
  Scanner scanner(text);
  const auto separator = [&] {
    return scanner.take(':') || scanner.take('-') || scanner.take('/');
  };
  media::PhotoTime time;
  time.year = scanner.number(4);
  const bool isMonthApart = separator();
  time.month = scanner.number(2);
  const bool isDayApart = separator();
  time.day = scanner.number(2);
  if (scanner.failed() || !isMonthApart || !isDayApart || time.day == 0 || !isDate(time))
    return std::nullopt;
  if (scanner.isDone()) return time;
  if (!scanner.take(' ') && !scanner.take('T')) return std::nullopt;
  time.hour = scanner.number(2);
  const bool isMinuteApart = scanner.take(':');
  time.minute = scanner.number(2);
  const bool hasSecond = scanner.take(':');
  if (hasSecond) time.second = scanner.number(2);
  if (scanner.failed() || !isMinuteApart || !isTimeOfDay(time)) return std::nullopt;
  time.hasTimeOfDay = true;
  time.subSecond = subSecondOf(subSecond);
  return time;
}

std::optional<media::PhotoTime> isoTime(std::string_view text) {
  Scanner scanner(text);
  media::PhotoTime time;
  time.year = scanner.number(4);
  if (scanner.take('-')) time.month = scanner.number(2);
  if (time.month != 0 && scanner.take('-')) time.day = scanner.number(2);
  if (scanner.failed() || !isDate(time)) return std::nullopt;
  if (scanner.isDone()) return time;
  if (time.day == 0 || (!scanner.take('T') && !scanner.take(' '))) return std::nullopt;
  time.hour = scanner.number(2);
  const bool isMinuteApart = scanner.take(':');
  time.minute = scanner.number(2);
  if (scanner.take(':')) time.second = scanner.number(2);
  if (scanner.failed() || !isMinuteApart || !isTimeOfDay(time)) return std::nullopt;
  time.hasTimeOfDay = true;
  if (scanner.take('.')) time.subSecond = subSecondOf(scanner.digits());
  setOffset(time, utcOffset(scanner.rest()), media::OffsetOrigin::kStated);
  return time;
}

std::optional<int> utcOffset(std::string_view text) {
  if (text == "Z") return 0;
  Scanner scanner(text);
  const bool isWest = scanner.take('-');
  if (!isWest && !scanner.take('+')) return std::nullopt;
  const int hours = scanner.number(2);
  const bool isApart = scanner.take(':');
  const int minutes = scanner.number(2);
  if (scanner.failed() || !isApart || !scanner.isDone() || minutes > 59) return std::nullopt;
  const int offset = (isWest ? -1 : 1) * (hours * 60 + minutes);
  return offset >= kWesternmost && offset <= kEasternmost ? std::optional(offset) : std::nullopt;
}

std::optional<int> offsetBetween(const media::PhotoTime& local, const media::PhotoTime& utc) {
  if (local.day == 0 || utc.day == 0) return std::nullopt;
  constexpr double kSecondsOfQuarter = 900;
  constexpr double kDeviation = 120;
  const auto difference = static_cast<double>((pointOf(local) - pointOf(utc)).count());
  const double quarters = std::round(difference / kSecondsOfQuarter);
  if (std::abs(quarters) > 96 || std::abs(difference - quarters * kSecondsOfQuarter) > kDeviation)
    return std::nullopt;
  const int minutes = static_cast<int>(quarters) * 15;
  return isZone(minutes) ? std::optional(minutes) : std::nullopt;
}

void readTimes(const Metadata& metadata, media::PhotoTags& tags) {
  tags.gpsTime = gpsTime(metadata);
  tags.taken = timeOf(metadata, kTaken);
  tags.digitized = timeOf(metadata, kDigitized);
  tags.modified = timeOf(metadata, kModified);
  completeOffset(metadata, tags.taken, tags.gpsTime);
  completeOffset(metadata, tags.digitized, tags.gpsTime);
  // When it was modified, nothing but its own offset counts: that may have been years later.
}

}  // namespace kolum::exif
