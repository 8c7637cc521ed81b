#include "terminal/numbers.h"

#include <charconv>
#include <cmath>

namespace kolum::tool {

std::optional<std::int64_t> parseNumber(std::string_view text) {
  const bool negative = text.starts_with('-');
  if (negative) text.remove_prefix(1);
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  if (hexadecimal) text.remove_prefix(2);
  std::uint64_t value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value, hexadecimal ? 16 : 10);
  if (error != std::errc() || stop != end || value > INT64_MAX) return std::nullopt;
  const auto magnitude = static_cast<std::int64_t>(value);
  return negative ? -magnitude : magnitude;
}

std::optional<double> parseDecimal(std::string_view text) {
  double value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value, std::chars_format::fixed);
  if (error != std::errc() || stop != end || !std::isfinite(value)) return std::nullopt;
  return value;
}

}  // namespace kolum::tool
