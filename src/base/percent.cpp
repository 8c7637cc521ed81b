#include "base/percent.h"

#include <algorithm>
#include <charconv>

namespace kolum {

namespace {

constexpr std::string_view kPlain =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
constexpr std::string_view kDigits = "0123456789ABCDEF";

}  // namespace

std::string percentEncoded(std::string_view bytes) {
  std::string out;
  for (const char c : bytes) {
    if (kPlain.find(c) != std::string_view::npos) {
      out += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    out.append({'%', kDigits[byte / kDigits.size()], kDigits[byte % kDigits.size()]});
  }
  return out;
}

std::optional<std::string> percentDecoded(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    std::size_t length = 1;
    unsigned char byte = static_cast<unsigned char>(text[0]);
    if (text[0] == '%') {
      length = 3;
      const char* end = text.data() + std::min(text.size(), length);
      const auto [stop, error] =
          std::from_chars(text.data() + 1, end, byte, static_cast<int>(kDigits.size()));
      if (error != std::errc() || stop != text.data() + length) return std::nullopt;
    }
    out += static_cast<char>(byte);
    text.remove_prefix(length);
  }
  return out;
}

}  // namespace kolum
