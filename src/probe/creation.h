// Creation dates as media files store them.
#ifndef KOLUM_PROBE_CREATION_H
#define KOLUM_PROBE_CREATION_H

#include <cstdint>
#include <optional>
#include <string>

namespace kolum::probe {

struct Creation {
  std::int64_t time = 0;  // seconds since 1970
  std::string yearMonth;  // "2015-06"
  std::string date;       // "2015-06-07"
  std::optional<int> year;
};

// From a video stream's "creation_time" entry, which is in universal time; the result is shifted by
// the local zone's current offset, including daylight saving time. Empty if it is not a date.
std::optional<Creation> creationOfStream(const std::string& value);

// From QuickTime's "com.apple.quicktime.creationdate" entry, read as local time. If parsing stops
// early, the fields parsed so far count.
Creation creationOfQuickTime(const std::string& value);

}  // namespace kolum::probe

#endif
