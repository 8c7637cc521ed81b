// Lists of texts that are mostly one text: artists, genres.
#ifndef KOLUM_DESCRIBE_TEXT_LISTS_H
#define KOLUM_DESCRIBE_TEXT_LISTS_H

#include <string>
#include <string_view>
#include <vector>

#include "describe/table.h"

namespace kolum::describe {

// All of them as one text.
inline Value joinedTexts(const std::vector<std::string>& values) {
  std::string joined;
  for (const std::string& value : values) joined += (joined.empty() ? "" : "; ") + value;
  return text(joined);
}

// Null for one, which the joined text states.
inline Value severalTexts(const std::vector<std::string>& values) {
  return values.size() > 1 ? texts(values) : Value();
}

// Of a date that begins with a year of four digits.
inline Value yearOf(std::string_view date) {
  constexpr std::size_t kDigits = 4;
  if (date.size() < kDigits) return nullptr;
  int year = 0;
  for (const char c : date.substr(0, kDigits)) {
    if (c < '0' || c > '9') return nullptr;
    year = 10 * year + (c - '0');
  }
  return year;
}

}  // namespace kolum::describe

#endif
