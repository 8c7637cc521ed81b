#include "media/film_date.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace kolum::media {

namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

bool isLeapYear(int year) {
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int daysOf(int year, int month) {
  constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  constexpr int kFebruary = 2;
  if (month == kFebruary && isLeapYear(year)) return 29;
  return kDays[static_cast<std::size_t>(month - 1)];
}

// Takes a text from its beginning.
class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {
    while (accept(" ")) {
    }
  }

  bool isAtEnd() const { return rest_.empty(); }

  // A number of exactly COUNT digits from FIRST to LAST; takes nothing else.
  std::optional<int> number(std::size_t count, int first, int last) {
    if (rest_.size() < count ||
        !std::all_of(rest_.begin(), rest_.begin() + static_cast<int>(count), isDigit))
      return std::nullopt;
    int value = 0;
    for (const char c : rest_.substr(0, count)) value = value * 10 + (c - '0');
    if (value < first || value > last) return std::nullopt;
    rest_.remove_prefix(count);
    return value;
  }

  // One of these characters, if it is next.
  bool accept(std::string_view characters) {
    if (rest_.empty() || characters.find(rest_.front()) == std::string_view::npos) return false;
    rest_.remove_prefix(1);
    return true;
  }

  // Digits after a point, as thousandths.
  int thousandths() {
    int value = 0;
    int unit = 100;
    for (; !rest_.empty() && isDigit(rest_.front()); rest_.remove_prefix(1)) {
      value += (rest_.front() - '0') * unit;
      unit /= 10;
    }
    return value;
  }

 private:
  std::string_view rest_;
};

std::optional<FilmTime> timeOf(Reader& text) {
  constexpr int kLeapSecond = 60;
  FilmTime time;
  const auto hour = text.number(2, 0, 23);
  text.accept(":");
  const auto minute = text.number(2, 0, 59);
  if (!hour || !minute) return std::nullopt;
  time.hour = *hour;
  time.minute = *minute;
  text.accept(":");
  time.second = text.number(2, 0, kLeapSecond).value_or(0);
  if (text.accept(".,")) time.millisecond = text.thousandths();
  return time;
}

// In minutes: "Z", "+02", "+0200" or "-03:30".
std::optional<int> offsetOf(Reader& text) {
  constexpr int kLongest = 14;
  text.accept(" ");
  if (text.accept("Zz")) return 0;
  const bool isEast = text.accept("+");
  if (!isEast && !text.accept("-")) return std::nullopt;
  const auto hours = text.number(2, 0, kLongest);
  if (!hours) return std::nullopt;
  text.accept(":");
  const int minutes = *hours * 60 + text.number(2, 0, 59).value_or(0);
  return isEast ? minutes : -minutes;
}

}  // namespace

std::optional<FilmDate> filmDateOf(std::string_view text) {
  constexpr std::string_view kSeparators = "-:/.";
  Reader reader(text);
  const auto year = reader.number(4, 1, 9999);
  if (!year) return std::nullopt;
  FilmDate date = {.year = *year};
  reader.accept(kSeparators);
  date.month = reader.number(2, 1, 12);
  if (!date.month) return date;
  reader.accept(kSeparators);
  date.day = reader.number(2, 1, daysOf(*year, *date.month));
  if (!date.day || !reader.accept("T t")) return date;
  date.time = timeOf(reader);
  if (!date.time) return date;
  date.offset = offsetOf(reader);
  if (date.offset) date.certainty = DateCertainty::kExplicit;
  return date;
}

}  // namespace kolum::media
