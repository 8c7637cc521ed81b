// Access to the parser's tables for help, suggestions and shell completion.
#ifndef KOLUM_TOOL_TERMINAL_COMMAND_TREE_H
#define KOLUM_TOOL_TERMINAL_COMMAND_TREE_H

#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace kolum::tool {

// The sub-commands that a command's --help lists.
std::vector<const CLI::App*> listedCommands(const CLI::App& command);
// One of them; null if none has that name.
const CLI::App* findCommand(const CLI::App& command, const std::string& name);

// A command's options and operands as its --help lists them.
std::vector<const CLI::Option*> listedOptions(const CLI::App& command);
std::vector<const CLI::Option*> listedOperands(const CLI::App& command);
// "--json"; "-0" for an option without a longer name.
std::string longestName(const CLI::Option& option);
bool takesValue(const CLI::Option& option);

// The message about a word that COMMAND does not know, with the name that was probably meant.
std::string unknownWord(const CLI::App& command, const std::string& word);

}  // namespace kolum::tool

#endif
