// A list of file names, read as it arrives: its writer may wait for each answer.
#ifndef KOLUM_TOOL_TERMINAL_NAME_LIST_H
#define KOLUM_TOOL_TERMINAL_NAME_LIST_H

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "describe/failure.h"

namespace kolum::tool {

// The terminator of names in a list. Unless it is given, the first bytes that contain NUL or a
// newline decide: NUL if there is one, else newline.
enum class NameEnd { kFirstThatComes, kNul, kNewline };

// Calls VISIT for every name read from DESCRIPTOR as soon as it is complete; empty names are
// ignored. Returns why the list could not be read to its end.
std::optional<describe::Failure> forEachNameIn(
    int descriptor, NameEnd end, const std::function<void(const std::string&)>& visit);

}  // namespace kolum::tool

#endif
