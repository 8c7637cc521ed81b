// The languages in which places have addresses.
#ifndef KOLUM_TOOL_COMMANDS_LANGUAGES_H
#define KOLUM_TOOL_COMMANDS_LANGUAGES_H

#include <span>
#include <string_view>

namespace kolum::tool {

// Their codes, each at the place of its number in <kolum/geocode.h>.
std::span<const std::string_view> placeLanguages();

}  // namespace kolum::tool

#endif
