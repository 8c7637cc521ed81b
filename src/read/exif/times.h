// Dates and times as photos store them.
#ifndef KOLUM_READ_EXIF_TIMES_H
#define KOLUM_READ_EXIF_TIMES_H

#include <optional>
#include <string_view>

#include "media/photo_tags.h"
#include "read/exif/metadata.h"

namespace kolum::exif {

// "2015:06:07 08:09:10", with the digits of its fraction apart.
std::optional<media::PhotoTime> exifTime(std::string_view text, std::string_view subSecond);

// "2015-06-07T08:09:10.25+02:00", of which the end may be missing.
std::optional<media::PhotoTime> isoTime(std::string_view text);

// "+02:00" or "Z", in minutes.
std::optional<int> utcOffset(std::string_view text);

// How far LOCAL is from UTC; empty unless that is an offset that a time zone has, give or take a
// little: cameras do not ask for the position in the very moment.
std::optional<int> offsetBetween(const media::PhotoTime& local, const media::PhotoTime& utc);

void readTimes(const Metadata& metadata, media::PhotoTags& tags);

}  // namespace kolum::exif

#endif
