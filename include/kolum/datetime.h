/*
 * Date-time texts of media tags, and unique numbers.
 */
#ifndef KOLUM_DATETIME_H
#define KOLUM_DATETIME_H

#include <stdint.h>

#include <kolum/export.h>

KOLUM_C_BEGIN

/*
 * Whether a character fits its position in a date: MAX is the largest digit allowed there, or '0'
 * for a separator, which is anything but a digit. Returns 1 if it fits, else 0. Any thread.
 */
KOLUM_EXPORT int checkCharRange(char c, char max);

/*
 * Whether TEXT starts with a date, year first or day first. A time is expected to follow, so texts
 * of fewer than 12 characters are rejected. Returns 1 and brings a day-first date into year-first
 * order in place, or 0 with TEXT unchanged. Only the form is checked: month 19 passes. A null TEXT
 * gives 0. Any thread.
 */
KOLUM_EXPORT int isYYYYMMDD(char* text);

/*
 * Seconds since 1970-01-01 00:00:00 of a text that starts with year, month, day, hour, minute and
 * second as runs of digits with anything between them; no time zone is applied. Only the first 20
 * characters count, and fields are not checked for their range. A missing field is 0, as is every
 * field of a null TEXT. Negative before 1970. Any thread.
 */
KOLUM_EXPORT int64_t DateTimeStringToSeconds(const char* text);

/*
 * A number that no other call in this process returns: the current time in seconds, or the last
 * number plus one if the clock has not passed it. Any thread.
 */
KOLUM_EXPORT unsigned int getUniqueNumer(void);

KOLUM_C_END

#endif
