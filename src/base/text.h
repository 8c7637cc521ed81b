// Bounded text: what every family needs to fill the caller's buffers.
#ifndef KOLUM_BASE_TEXT_H
#define KOLUM_BASE_TEXT_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kolum {

// Size of every path buffer, with the terminator.
inline constexpr std::size_t kPathSize = 1024;

// FOLDER followed by NAME, with nothing in between, cut to the size of a path buffer.
std::string joinPath(std::string_view folder, std::string_view name);

// The same, but empty if it would have to be cut: a cut path would name another file.
std::optional<std::string> wholePath(std::string_view folder, std::string_view name);

// Copies TEXT into OUT (SIZE bytes, at least 1), cut to fit, always terminated.
void copyText(char* out, std::size_t size, std::string_view text);

template <std::size_t kSize>
void copyText(char (&out)[kSize], std::string_view text) {
  copyText(out, kSize, text);
}

// The part of a name from its last "."; empty if there is none.
std::string_view extensionOf(std::string_view name);

// Only ASCII letters have case here, whatever the locale.
constexpr char lowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
bool equalsIgnoringCase(std::string_view a, std::string_view b);
bool startsWithIgnoringCase(std::string_view text, std::string_view beginning);
bool endsWithIgnoringCase(std::string_view text, std::string_view ending);

}  // namespace kolum

#endif
