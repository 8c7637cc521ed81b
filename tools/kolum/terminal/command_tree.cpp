#include "terminal/command_tree.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>

namespace kolum::tool {

namespace {

std::vector<const CLI::Option*> optionsOf(const CLI::App& command, bool operands) {
  return command.get_options([&](const CLI::Option* option) {
    return option->get_positional() == operands && !option->get_group().empty();
  });
}

// The number of single edits that turn one word into the other: a letter added, removed or
// replaced, or two neighbours swapped.
std::size_t editsBetween(std::string_view a, std::string_view b) {
  std::vector<std::vector<std::size_t>> edits(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t k = 0; k <= b.size(); ++k) {
      if (i == 0 || k == 0) {
        edits[i][k] = i + k;
        continue;
      }
      const std::size_t other = a[i - 1] == b[k - 1] ? 0 : 1;
      edits[i][k] =
          std::min({edits[i - 1][k] + 1, edits[i][k - 1] + 1, edits[i - 1][k - 1] + other});
      const bool swapped = i > 1 && k > 1 && a[i - 1] == b[k - 2] && a[i - 2] == b[k - 1];
      if (swapped) edits[i][k] = std::min(edits[i][k], edits[i - 2][k - 2] + 1);
    }
  }
  return edits[a.size()][b.size()];
}

// The name nearest to WORD; empty if none is near.
std::string nearest(std::string_view word, const std::vector<std::string>& names) {
  constexpr std::size_t kLongest = 32;  // no name is longer, and the table stays small
  std::string best;
  std::size_t fewest = word.size() < 4 ? 2 : 3;  // more edits give a different word
  for (const std::string& name : names) {
    if (word.size() > kLongest) break;
    const std::size_t edits = editsBetween(word, name);
    if (edits >= fewest) continue;
    best = name;
    fewest = edits;
  }
  return best;
}

bool namesAFile(const std::string& word) {
  return word.find_first_of("./") != std::string::npos || access(word.c_str(), F_OK) == 0;
}

// A file as it may be typed; the placeholder if a shell would read its name differently.
std::string typedFile(const std::string& name) {
  constexpr std::string_view kPlain =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._/+,@%:=";
  return name.find_first_not_of(kPlain) == std::string::npos ? name : "FILE";
}

std::string meantCommand(const CLI::App& command, const std::string& word) {
  if (command.get_parent() == nullptr && namesAFile(word)) return "kolum probe " + typedFile(word);
  std::vector<std::string> names;
  for (const CLI::App* nested : listedCommands(command)) names.push_back(nested->get_name());
  return nearest(word, names);
}

std::string meantOption(const CLI::App& command, const std::string& word) {
  std::vector<std::string> names;
  for (const CLI::Option* option : listedOptions(command)) names.push_back(longestName(*option));
  return nearest(word.substr(0, word.find('=')), names);
}

}  // namespace

std::vector<const CLI::App*> listedCommands(const CLI::App& command) {
  return command.get_subcommands(
      [](const CLI::App* nested) { return !nested->get_group().empty(); });
}

const CLI::App* findCommand(const CLI::App& command, const std::string& name) {
  for (const CLI::App* nested : listedCommands(command))
    if (nested->get_name() == name) return nested;
  return nullptr;
}

std::vector<const CLI::Option*> listedOptions(const CLI::App& command) {
  return optionsOf(command, false);
}

std::vector<const CLI::Option*> listedOperands(const CLI::App& command) {
  return optionsOf(command, true);
}

std::string longestName(const CLI::Option& option) {
  if (!option.get_lnames().empty()) return "--" + option.get_lnames().front();
  return option.get_snames().empty() ? "" : "-" + option.get_snames().front();
}

bool takesValue(const CLI::Option& option) {
  return option.get_items_expected_max() > 0;
}

std::string unknownWord(const CLI::App& command, const std::string& word) {
  const bool isOption = word.starts_with('-');
  const bool isCommand = !isOption && command.get_require_subcommand_min() > 0;
  const std::string quoted = "\"" + word + "\"";
  const std::string meant = isCommand  ? meantCommand(command, word)
                            : isOption ? meantOption(command, word)
                                       : "";
  return (isCommand ? "no command " : "unexpected argument ") + quoted +
         (meant.empty() ? "" : " (did you mean \"" + meant + "\"?)");
}

}  // namespace kolum::tool
