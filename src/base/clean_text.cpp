#include "base/clean_text.h"

#include "base/utf8.h"

namespace kolum {

std::string cleanText(std::string_view text, std::size_t limit) {
  constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
  text = text.substr(0, text.find('\0'));
  std::string clean;
  while (!text.empty()) {
    const std::size_t length = firstUtf8Character(text).length;
    const std::string_view next = length > 0 ? text.substr(0, length) : kReplacement;
    if (clean.size() + next.size() > limit) break;
    clean += next;
    text.remove_prefix(length > 0 ? length : 1);
  }
  return clean;
}

bool isCleanText(std::string_view text, std::size_t limit) {
  return text.size() <= limit && text.find('\0') == std::string_view::npos && isUtf8(text);
}

}  // namespace kolum
