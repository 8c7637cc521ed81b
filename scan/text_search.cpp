#include "scan/text_search.h"

#include <locale.h>
#include <wctype.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

#include "base/text.h"
#include "base/utf8.h"

namespace kolum::scan {

namespace {

// The tool itself runs in the "C" locale, which knows only ASCII.
char32_t lowerCaseOf(char32_t code) {
  static const locale_t kUtf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  return kUtf8 == nullptr ? code : static_cast<char32_t>(towlower_l(code, kUtf8));
}

void append(std::string& text, char32_t code) {
  const auto following = [&](unsigned shift) {
    text += static_cast<char>(0x80U | (code >> shift & 0x3FU));
  };
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text += static_cast<char>(0xC0U | code >> 6U);
    following(0);
  } else if (code < 0x10000) {
    text += static_cast<char>(0xE0U | code >> 12U);
    following(6);
    following(0);
  } else {
    text += static_cast<char>(0xF0U | code >> 18U);
    following(12);
    following(6);
    following(0);
  }
}

// What an SQL value holds, of any type.
std::string_view bytesOf(sqlite3_value* value) {
  const void* bytes = sqlite3_value_type(value) == SQLITE_BLOB ? sqlite3_value_blob(value)
                                                               : sqlite3_value_text(value);
  if (bytes == nullptr) return {};
  return {static_cast<const char*>(bytes), static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

// The part is the same for all rows: SQLite keeps it folded.
void hasText(sqlite3_context* context, int, sqlite3_value** arguments) {
  constexpr int kPart = 1;
  try {
    if (sqlite3_value_type(arguments[0]) == SQLITE_NULL) return sqlite3_result_null(context);
    const std::string text = foldedCase(bytesOf(arguments[0]));
    const auto* kept = static_cast<const std::string*>(sqlite3_get_auxdata(context, kPart));
    if (kept != nullptr)
      return sqlite3_result_int(context, text.find(*kept) != std::string::npos ? 1 : 0);
    auto part = std::make_unique<std::string>(foldedCase(bytesOf(arguments[kPart])));
    sqlite3_result_int(context, text.find(*part) != std::string::npos ? 1 : 0);
    sqlite3_set_auxdata(context, kPart, part.release(),
                        [](void* old) { delete static_cast<std::string*>(old); });
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(context);
  }
}

}  // namespace

std::string foldedCase(std::string_view text) {
  std::string folded(text.size(), '\0');
  std::transform(text.begin(), text.end(), folded.begin(), lowerCase);
  const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
  if (std::all_of(text.begin(), text.end(), isAscii)) return folded;
  folded.clear();
  while (!text.empty()) {
    const Utf8Character character = firstUtf8Character(text);
    if (character.length < 2) {  // ASCII, or no character
      folded += lowerCase(text.front());
      text.remove_prefix(1);
    } else {
      append(folded, lowerCaseOf(character.code));
      text.remove_prefix(character.length);
    }
  }
  return folded;
}

int addTextSearch(sqlite3* database) {
  return sqlite3_create_function_v2(database, "has_text", 2,
                                    SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_DIRECTONLY, nullptr,
                                    hasText, nullptr, nullptr, nullptr);
}

}  // namespace kolum::scan
