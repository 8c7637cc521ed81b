#include <kolum/host.h>

#include <climits>
#include <clocale>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <string>
#include <string_view>

#include "base/utf8.h"

namespace {

constexpr char kReplacement = '_';

// Characters that need no quoting in a shell word. Bytes of non-ASCII characters need none either.
bool isShellSafe(char c) {
  constexpr std::string_view kSafe = "/._-+,:@%=";
  const bool isAlphanumeric =
      (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
  return isAlphanumeric || static_cast<unsigned char>(c) >= 0x80 ||
         kSafe.find(c) != std::string_view::npos;
}

// The number of bytes for a character in a shell word.
std::size_t shellLength(char c) {
  if (c == '\n') return 3;
  return isShellSafe(c) ? 1 : 2;
}

void writeForShell(char c, char* out) {
  switch (shellLength(c)) {
    case 1:
      out[0] = c;
      break;
    case 2:
      out[0] = '\\';
      out[1] = c;
      break;
    default:
      // The shell would remove a line end after a backslash; quotes keep it.
      out[0] = '\'';
      out[1] = c;
      out[2] = '\'';
  }
}

// Characters that file names cannot contain, or that would end a quoted word in a shell command.
bool isFileSafe(wint_t c) {
  constexpr std::wstring_view kUnsafe = L"/\\:*?\"'<>|`$";
  const bool isControl = c < 0x20 || (c >= 0x7F && c < 0xA0);
  return !isControl && kUnsafe.find(static_cast<wchar_t>(c)) == std::wstring_view::npos;
}

// Created when the library is loaded. A moment without memory or descriptors later would be enough
// to lose it for good: the C library remembers that it could not load it.
const locale_t kUtf8Locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);

// Makes a locale the calling thread's own during its lifetime.
class ScopedLocale {
 public:
  explicit ScopedLocale(locale_t locale) : before_(uselocale(locale)) {}
  ~ScopedLocale() { uselocale(before_); }
  ScopedLocale(const ScopedLocale&) = delete;
  ScopedLocale& operator=(const ScopedLocale&) = delete;

 private:
  locale_t before_;
};

// The lower-case, file-name-safe form; bytes that are not UTF-8 are replaced.
std::string lowerFileName(std::string_view text) {
  const ScopedLocale locale(kUtf8Locale);
  std::string out;
  while (!text.empty()) {
    const kolum::Utf8Character character = kolum::firstUtf8Character(text);
    if (character.length == 0) {
      out += kReplacement;
      text.remove_prefix(1);
      continue;
    }
    text.remove_prefix(character.length);
    const auto lower = std::towlower(static_cast<wint_t>(character.code));
    if (!isFileSafe(lower)) {
      out += kReplacement;
      continue;
    }
    char encoded[MB_LEN_MAX];
    std::mbstate_t writing = {};
    const std::size_t length = std::wcrtomb(encoded, static_cast<wchar_t>(lower), &writing);
    out.append(encoded, length);
  }
  return out;
}

// Cuts to at most SIZE bytes without splitting a character.
void cutToCharacters(std::string& text, std::size_t size) {
  if (text.size() <= size) return;
  const auto isContinuation = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; };
  while (size > 0 && isContinuation(text[size])) --size;
  text.resize(size);
}

}  // namespace

void StringConvert2SystemCmdFilename(char* path) {
  if (path == nullptr) return;
  const std::size_t length = std::strlen(path);
  std::size_t end = 0;
  for (std::size_t i = 0; i < length; ++i) end += shellLength(path[i]);
  path[end] = '\0';
  // Starts from the end, so that nothing is overwritten before it is read and no memory is needed.
  for (std::size_t i = length; i-- > 0;) {
    const char c = path[i];
    end -= shellLength(c);
    writeForShell(c, path + end);
  }
}

int StringConvert2LowerFileString(const char* src, int srcLength, char* dst, int dstSize) try {
  if (src == nullptr || dst == nullptr || srcLength <= 0 || dstSize <= 1) return -1;
  if (kUtf8Locale == nullptr) return -1;
  const std::string_view text(src, strnlen(src, static_cast<std::size_t>(srcLength)));
  std::string name = lowerFileName(text);
  cutToCharacters(name, static_cast<std::size_t>(dstSize) - 1);
  if (name.empty()) return -1;
  // "." and ".." cannot name something new, and names with "@_" at the beginning are those of album
  // source pictures, for which a finished thumbnail in the same folder must not be mistaken.
  if (name == "." || name == ".." || name.starts_with("@_")) name.front() = kReplacement;
  std::memcpy(dst, name.c_str(), name.size() + 1);
  return 0;
} catch (...) {
  return -1;
}
