#include <memory>

#include "terminal/command.h"
#include "terminal/command_tree.h"
#include "terminal/context.h"
#include "terminal/help.h"
#include "terminal/syntax.h"

namespace kolum::tool {

namespace {

// The help of the command that TOPICS lead to, starting at ROOT.
std::string helpOn(const CLI::App& root, const std::vector<std::string>& topics) {
  const CLI::App* command = &root;
  for (const std::string& topic : topics) {
    const CLI::App* nested = findCommand(*command, topic);
    if (nested == nullptr) throw UsageError(unknownWord(*command, topic));
    command = nested;
  }
  return helpOf(*command);
}

}  // namespace

Action defineHelp(Syntax& syntax) {
  auto topics = std::make_shared<std::vector<std::string>>();
  syntax.operands({"TOPIC", Offer::kCommands}, *topics, "A command and, if any, its sub-command");
  syntax.help(
      "Shows what \"kolum --help\" shows, or \"kolum TOPIC --help\".\n"
      "\nExamples:\n  kolum help probe\n  kolum help config set");
  const CLI::App* root = &syntax.root();
  return [root, topics](Context& context) { context.printer.raw(helpOn(*root, *topics)); };
}

}  // namespace kolum::tool
