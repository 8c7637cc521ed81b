// The text of --help. Written here because the parser's releases lay out their own help
// differently, and the manual pages are made from it.
#ifndef KOLUM_TOOL_TERMINAL_HELP_H
#define KOLUM_TOOL_TERMINAL_HELP_H

#include <string>

namespace CLI {
class App;
}

namespace kolum::tool {

// The words to type for a command: "kolum notify wait".
std::string commandLineOf(const CLI::App& command);

std::string helpOf(const CLI::App& command);

}  // namespace kolum::tool

#endif
