// The commands' registration table.
#ifndef KOLUM_TOOL_COMMANDS_H
#define KOLUM_TOOL_COMMANDS_H

#include <functional>
#include <span>

namespace CLI {
class App;
}

namespace kolum::tool {

class Context;

// What a command does once its arguments are parsed.
using Action = std::function<void(Context&)>;

struct Command {
  const char* name;
  const char* summary;  // one line, for the list of commands; those without one are not listed
  // Adds the command's options to its parser and returns what to do with them.
  Action (*define)(CLI::App& command);
};

std::span<const Command> commands();

}  // namespace kolum::tool

#endif
