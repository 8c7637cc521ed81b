// A list of file names, read as it comes: whoever writes it may wait for each answer.
#ifndef KOLUM_TOOL_TERMINAL_NAME_LIST_H
#define KOLUM_TOOL_TERMINAL_NAME_LIST_H

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "terminal/failure.h"

namespace kolum::tool {

// What ends the names of a list. Unless it is said, the first bytes that hold one of the two
// decide: NUL where there is one, else the newline.
enum class NameEnd { kFirstThatComes, kNul, kNewline };

// Calls VISIT for every name in what DESCRIPTOR reads, as soon as its end has come; empty names are
// no names. Returns why the list could not be read to its end.
std::optional<Failure> forEachNameIn(int descriptor, NameEnd end,
                                     const std::function<void(const std::string&)>& visit);

}  // namespace kolum::tool

#endif
