#include "base/moment.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <ctime>

namespace kolum {

namespace {

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr std::size_t kDecimals = 9;
constexpr std::string_view kPattern = "0000-00-00T00:00:00";

// The digits of a text that must be one number; -1 if it is none.
std::int64_t numberOf(std::string_view digits) {
  std::int64_t number = 0;
  const bool areDigits = !digits.empty() && std::all_of(digits.begin(), digits.end(), [](char c) {
    return c >= '0' && c <= '9';
  });
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return areDigits && error == std::errc() ? number : -1;
}

// What follows the seconds: "Z", or a point, decimals and "Z". -1 for anything else.
std::int64_t fractionOf(std::string_view rest) {
  if (rest == "Z") return 0;
  if (!rest.starts_with('.') || !rest.ends_with('Z')) return -1;
  std::string decimals(rest.substr(1, rest.size() - 2));
  if (decimals.empty() || decimals.size() > kDecimals) return -1;
  decimals.resize(kDecimals, '0');
  return numberOf(decimals);
}

}  // namespace

std::string momentText(std::int64_t nanosecondsSince1970) {
  std::int64_t seconds = nanosecondsSince1970 / kSecond;
  std::int64_t rest = nanosecondsSince1970 % kSecond;
  if (rest < 0) {
    --seconds;
    rest += kSecond;
  }
  std::tm fields = {};
  const std::time_t time = seconds;
  gmtime_r(&time, &fields);  // the years 1677 to 2262
  char text[64];
  std::string moment(text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &fields));
  if (rest != 0) {
    std::snprintf(text, sizeof text, ".%09lld", static_cast<long long>(rest));
    moment += text;
    moment.erase(moment.find_last_not_of('0') + 1);
  }
  return moment + "Z";
}

std::optional<std::int64_t> momentOf(std::string_view text) {
  if (text.size() <= kPattern.size()) return std::nullopt;
  for (std::size_t i = 0; i < kPattern.size(); ++i)
    if (kPattern[i] != '0' && text[i] != kPattern[i]) return std::nullopt;
  const auto number = [text](std::size_t at, std::size_t length) {
    return static_cast<int>(numberOf(text.substr(at, length)));
  };
  std::tm fields = {};
  fields.tm_year = number(0, 4) - 1900;
  fields.tm_mon = number(5, 2) - 1;
  fields.tm_mday = number(8, 2);
  fields.tm_hour = number(11, 2);
  fields.tm_min = number(14, 2);
  fields.tm_sec = number(17, 2);
  const std::int64_t fraction = fractionOf(text.substr(kPattern.size()));
  std::int64_t moment = 0;
  if (fraction < 0 || __builtin_mul_overflow(std::int64_t{timegm(&fields)}, kSecond, &moment) ||
      __builtin_add_overflow(moment, fraction, &moment))
    return std::nullopt;
  // timegm() takes the 31st of February, and fields that are no numbers.
  if (!momentText(moment).starts_with(text.substr(0, kPattern.size()))) return std::nullopt;
  return moment;
}

}  // namespace kolum
