// Output for programs, where people read it: JSON and CSV as they go to a terminal. What files are
// called and what their tags say must not control it, or show in another order than it stands.
#ifndef KOLUM_TOOL_TERMINAL_DATA_TEXT_H
#define KOLUM_TOOL_TERMINAL_DATA_TEXT_H

#include <string>
#include <string_view>

namespace kolum::tool {

// JSON of the same value, with \uXXXX for all that is not safe; without line ends.
std::string jsonForTerminal(std::string_view json);

// A row of CSV, with U+FFFD for all that is not safe; CSV has no other way to write it. Its line
// end stays.
std::string csvForTerminal(std::string_view row);

}  // namespace kolum::tool

#endif
