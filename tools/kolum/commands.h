// The table of all commands.
#ifndef KOLUM_TOOL_COMMANDS_H
#define KOLUM_TOOL_COMMANDS_H

#include <span>

#include "terminal/command.h"

namespace kolum::tool {

// In the order in which --help lists them.
std::span<const Command> commands();

}  // namespace kolum::tool

#endif
