#include "commands.h"

#include <array>

// To add a command: write command_NAME.cpp with a function
//
//   Action defineName(CLI::App& command);
//
// that adds options (arguments.h has those that commands share), sets command.footer() to what the
// command's --help says beyond its options (what it prints, an example), and returns the action.
// The action gets the Context: it prints through context.printer and reports with context.fail().
// Then add the declaration and one row here, the file to CMakeLists.txt, its JSON keys to
// docs/tool.md, a paragraph to docs/kolum.1, its options to completion/kolum.bash and its tests to
// tests/tool.

namespace kolum::tool {

namespace {

constexpr std::array<Command, 0> kCommands = {};

}  // namespace

std::span<const Command> commands() {
  return kCommands;
}

}  // namespace kolum::tool
