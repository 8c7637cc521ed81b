// The commands' registration table.
#ifndef KOLUM_TOOL_COMMANDS_H
#define KOLUM_TOOL_COMMANDS_H

#include <functional>
#include <span>

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

std::span<const Command> commands();

}  // namespace kolum::tool

#endif
