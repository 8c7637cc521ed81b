// Dates in the tags of films, with what is known about their zone.
#ifndef KOLUM_MEDIA_FILM_DATE_H
#define KOLUM_MEDIA_FILM_DATE_H

#include <optional>
#include <string_view>

namespace kolum::media {

// How sure it is which moment a time means.
enum class DateCertainty {
  kExplicit,  // its offset from universal time is stated
  kUtc,       // universal time by the definition of the container
  kLocal,     // local time at an unknown place: nothing says more, or the camera is known to ignore
              // the container's definition
};

struct FilmTime {
  int hour = 0;
  int minute = 0;
  int second = 0;
  int millisecond = 0;
  bool operator==(const FilmTime&) const = default;
};

// As stored, not converted to another zone.
struct FilmDate {
  int year = 0;                       // 1 to 9999
  std::optional<int> month = {};      // 1 to 12
  std::optional<int> day = {};        // 1 to 31; only with the month, and existing in it
  std::optional<FilmTime> time = {};  // only with the day
  // Minutes east of universal time: 0 for kUtc, empty for kLocal and without a time.
  std::optional<int> offset = {};
  DateCertainty certainty = DateCertainty::kLocal;
  bool operator==(const FilmDate&) const = default;
};

// "2015", "2015-06", "2015-06-07", "20150607", and the latter two followed by a time such as
// "T08:09:10.5+0200", " 08:09" or "T08:09:10Z"; ":", "/" and "." may stand for "-" in dates. What
// follows an impossible part is left out; empty if that is the year. The certainty is kExplicit or
// kLocal.
std::optional<FilmDate> filmDateOf(std::string_view text);

}  // namespace kolum::media

#endif
