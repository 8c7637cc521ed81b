// A command, as the table of commands (commands.cpp) and those with commands of their own list it.
#ifndef KOLUM_TOOL_TERMINAL_COMMAND_H
#define KOLUM_TOOL_TERMINAL_COMMAND_H

#include <functional>

namespace kolum::tool {

class Context;
class Syntax;

// What a command does once its arguments are parsed.
using Action = std::function<void(Context&)>;

struct Command {
  const char* name;
  const char* summary;  // one line, for the list of commands; those without one are not listed
  // Adds the command's options to its syntax and returns what to do with them; nothing when it has
  // commands of its own.
  Action (*define)(Syntax& syntax);
};

}  // namespace kolum::tool

#endif
