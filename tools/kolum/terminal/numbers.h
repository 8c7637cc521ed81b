// Numbers on the command line.
#ifndef KOLUM_TOOL_TERMINAL_NUMBERS_H
#define KOLUM_TOOL_TERMINAL_NUMBERS_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace kolum::tool {

// A whole number, decimal or hexadecimal with "0x", with an optional "-" and nothing else around
// it.
std::optional<std::int64_t> parseNumber(std::string_view text);

// A finite number in decimal notation, such as "-2.2945", with nothing else around it.
std::optional<double> parseDecimal(std::string_view text);

}  // namespace kolum::tool

#endif
