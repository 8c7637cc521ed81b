// Text from files, as it may be shown and stored.
#ifndef KOLUM_BASE_CLEAN_TEXT_H
#define KOLUM_BASE_CLEAN_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace kolum {

inline constexpr std::size_t kLongestText = 65536;

// TEXT up to its first NUL, as UTF-8: each byte that is none becomes U+FFFD. Cut between two
// characters if it is longer than LIMIT bytes.
std::string cleanText(std::string_view text, std::size_t limit = kLongestText);

// Whether cleanText() leaves TEXT as it is.
bool isCleanText(std::string_view text, std::size_t limit = kLongestText);

}  // namespace kolum

#endif
