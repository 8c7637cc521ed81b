#include "terminal/help.h"

#include <CLI/CLI.hpp>
#include <vector>

#include "terminal/command_tree.h"

namespace kolum::tool {

namespace {

// The column where meanings begin.
constexpr std::size_t kMeaningColumn = 26;

bool takesMany(const CLI::Option& option) {
  return option.get_expected_max() > 1;
}

// An operand in the usage line: "FILE", "[FILE]", "[FILE...]".
std::string operandUsage(const CLI::Option& operand) {
  const std::string name = operand.get_name(true) + (takesMany(operand) ? "..." : "");
  return operand.get_required() ? name : "[" + name + "]";
}

std::string usageOf(const CLI::App& command) {
  std::string usage = "Usage: " + commandLineOf(command) + " [OPTIONS]";
  for (const CLI::Option* operand : listedOperands(command)) usage += " " + operandUsage(*operand);
  return usage + (listedCommands(command).empty() ? "" : " COMMAND") + "\n";
}

// A line of a list; the meaning of a long name gets its own line.
std::string entry(const std::string& name, const std::string& meaning) {
  std::string line = "  " + name;
  if (line.size() >= kMeaningColumn)
    line += "\n" + std::string(kMeaningColumn, ' ');
  else
    line.resize(kMeaningColumn, ' ');
  return line + meaning + "\n";
}

std::string operandEntry(const CLI::Option& operand) {
  return entry(operand.get_name(true) + (takesMany(operand) ? " ..." : ""),
               operand.get_description());
}

std::string optionEntry(const CLI::Option& option) {
  std::string name = option.get_name(false, true);
  if (!option.get_type_name().empty()) name += " " + option.get_type_name();
  return entry(name, option.get_description());
}

// The list with its title; empty if there are no items.
template <typename Item>
std::string list(const std::string& title, const std::vector<const Item*>& items,
                 std::string (*line)(const Item&)) {
  std::string text;
  for (const Item* item : items) text += line(*item);
  return text.empty() ? text : "\n" + title + ":\n" + text;
}

}  // namespace

std::string commandLineOf(const CLI::App& command) {
  const CLI::App* parent = command.get_parent();
  return parent == nullptr ? command.get_name() : commandLineOf(*parent) + " " + command.get_name();
}

std::string helpOf(const CLI::App& command) {
  const auto commandEntry = [](const CLI::App& nested) {
    return entry(nested.get_name(), nested.get_description());
  };
  return command.get_description() + "\n" + usageOf(command) +
         list<CLI::Option>("Operands", listedOperands(command), operandEntry) +
         list<CLI::Option>("Options", listedOptions(command), optionEntry) +
         list<CLI::App>("Commands", listedCommands(command), commandEntry) + "\n" +
         command.get_footer() + "\n";
}

}  // namespace kolum::tool
