// What --help prints. Written here because the parser's releases lay their own help out
// differently, and the manual pages are made from this text.
#ifndef KOLUM_TOOL_TERMINAL_HELP_H
#define KOLUM_TOOL_TERMINAL_HELP_H

#include <string>

namespace CLI {
class App;
}

namespace kolum::tool {

// The command's words as they are typed: "kolum notify wait".
std::string commandLineOf(const CLI::App& command);

std::string helpOf(const CLI::App& command);

}  // namespace kolum::tool

#endif
