// Moments as text for programs: "2015-06-07T08:09:10.5Z".
#ifndef KOLUM_BASE_MOMENT_H
#define KOLUM_BASE_MOMENT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kolum {

// In UTC (RFC 3339), with as many decimals as are needed.
std::string momentText(std::int64_t nanosecondsSince1970);

// The moment of such a text; empty for every other text.
std::optional<std::int64_t> momentOf(std::string_view text);

}  // namespace kolum

#endif
