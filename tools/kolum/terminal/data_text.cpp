#include "terminal/data_text.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

#include "base/utf8.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr std::string_view kLineEnd = "\r\n";

// TEXT with what REPLACE gives for each character that is not safe, and U+FFFD for bytes that are
// none.
template <typename Replace>
std::string safe(std::string_view text, Replace replace) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    const auto [code, length] = firstUtf8Character(text);
    if (length == 0)
      out += kReplacement;
    else if (isSafe(code))
      out += text.substr(0, length);
    else
      out += replace(code);
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return out;
}

std::string unitText(std::uint32_t unit) {
  char buffer[8];
  std::snprintf(buffer, sizeof buffer, "\\u%04x", static_cast<unsigned>(unit & 0xFFFFU));
  return buffer;
}

// JSON escapes UTF-16: above U+FFFF, two halves.
std::string escapedForJson(char32_t code) {
  constexpr std::uint32_t kFirstOfPairs = 0x10000;
  if (code < kFirstOfPairs) return unitText(code);
  const std::uint32_t rest = code - kFirstOfPairs;
  return unitText(0xD800 + (rest >> 10U)) + unitText(0xDC00 + (rest & 0x3FFU));
}

}  // namespace

std::string jsonForTerminal(std::string_view json) {
  return safe(json, escapedForJson);
}

std::string csvForTerminal(std::string_view row) {
  const bool hasEnd = row.ends_with(kLineEnd);
  if (hasEnd) row.remove_suffix(kLineEnd.size());
  std::string shown = safe(row, [](char32_t /*code*/) { return kReplacement; });
  return hasEnd ? shown.append(kLineEnd) : shown;
}

}  // namespace kolum::tool
