// Dates and times as media files store them, and numbers derived from the clock.
#ifndef KOLUM_MEDIA_DATES_H
#define KOLUM_MEDIA_DATES_H

#include <cstdint>

namespace kolum::media {

// Whether a character fits its position in a date: MAX is the largest digit there, or '0' for a
// separator, which is anything but a digit.
bool fitsDate(char c, char max);

// Whether a text of at least 12 characters starts with a date. A day-first date is brought into
// year-first order in place.
bool normalizeDate(char* text);

// Seconds since 1970 of a text of year, month, day, hour, minute and second, each a run of digits.
std::int64_t secondsOfDate(const char* text);

// A number that no other call in this process returns, close to the current time in seconds.
unsigned uniqueNumber();

}  // namespace kolum::media

#endif
