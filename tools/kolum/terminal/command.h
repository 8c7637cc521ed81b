// A command, as listed in the table of commands (commands.cpp) and by commands with sub-commands.
#ifndef KOLUM_TOOL_TERMINAL_COMMAND_H
#define KOLUM_TOOL_TERMINAL_COMMAND_H

#include <functional>

namespace kolum::tool {

class Context;
class Syntax;

// What a command does after its arguments are parsed.
using Action = std::function<void(Context&)>;

struct Command {
  const char* name;
  const char* summary;  // one line for the list of commands; those without one are not listed
  // Adds the command's options to its syntax and returns its action; none if it has sub-commands.
  Action (*define)(Syntax& syntax);
};

}  // namespace kolum::tool

#endif
