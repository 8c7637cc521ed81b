// Percent-encoding of bytes, as in URLs.
#ifndef KOLUM_BASE_PERCENT_H
#define KOLUM_BASE_PERCENT_H

#include <optional>
#include <string>
#include <string_view>

namespace kolum {

// BYTES with everything but ASCII letters, digits and "-._~/" written as %FF.
std::string percentEncoded(std::string_view bytes);
// The bytes that it stands for; empty if a "%" is not followed by two digits.
std::optional<std::string> percentDecoded(std::string_view text);

}  // namespace kolum

#endif
