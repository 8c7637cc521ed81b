// Decoding UTF-8.
#ifndef KOLUM_BASE_UTF8_H
#define KOLUM_BASE_UTF8_H

#include <array>
#include <cstddef>
#include <string_view>

namespace kolum {

struct Utf8Character {
  char32_t code;
  std::size_t length;  // in bytes
};

// The first character of a text that is not empty. Length 0 when the bytes there are not UTF-8;
// overlong forms, surrogates and numbers beyond Unicode are not.
inline Utf8Character firstUtf8Character(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return {lead, 1};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return {0, 0};
  char32_t code = lead & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return {0, 0};
    code = code << 6 | (byte(i) & 0x3F);
  }
  constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  if (code < kSmallest[length] || code > 0x10FFFF || surrogate) return {0, 0};
  return {code, length};
}

inline bool isUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const Utf8Character character = firstUtf8Character(bytes);
    if (character.length == 0) return false;
    bytes.remove_prefix(character.length);
  }
  return true;
}

}  // namespace kolum

#endif
