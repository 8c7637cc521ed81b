// Letters and digits, independent of the locale.
#ifndef KOLUM_TOOLS_ASCII_H
#define KOLUM_TOOLS_ASCII_H

#include <string>
#include <string_view>

namespace kolum::ascii {

constexpr bool isUpper(char c) {
  return c >= 'A' && c <= 'Z';
}

constexpr bool isLower(char c) {
  return c >= 'a' && c <= 'z';
}

constexpr bool isLetter(char c) {
  return isUpper(c) || isLower(c);
}

constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

constexpr char lower(char c) {
  return isUpper(c) ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr char upper(char c) {
  return isLower(c) ? static_cast<char>(c - 'a' + 'A') : c;
}

inline std::string lower(std::string_view text) {
  std::string result(text);
  for (char& c : result) c = lower(c);
  return result;
}

}  // namespace kolum::ascii

#endif
