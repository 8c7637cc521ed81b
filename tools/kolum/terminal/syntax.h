// How a command is written on the command line: its operands, its options, its sub-commands and the
// text of its help. A face of the parser's library, whose headers take long to compile.
#ifndef KOLUM_TOOL_TERMINAL_SYNTAX_H
#define KOLUM_TOOL_TERMINAL_SYNTAX_H

#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "terminal/command.h"
#include "terminal/placeholder.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace kolum::tool {

// What commands say of themselves beyond what the parser keeps.
struct Grammar {
  std::map<const CLI::App*, Action> actions;  // of those that do something themselves
  std::map<const CLI::Option*, Placeholder> placeholders;
};

struct NumberRange {
  int least;
  int most;
};

// The variables given to it are written while the command line is parsed. All names of options are
// as CLI11 takes them ("-0,--null"). Those that take one value refuse a second, those of numbers
// what is none in their range.
class Syntax {
 public:
  Syntax(CLI::App& parser, Grammar& grammar) : parser_(parser), grammar_(grammar) {}

  void operand(const Placeholder& name, std::string& value, const std::string& meaning);
  void operand(const Placeholder& name, int& value, NumberRange range, const std::string& meaning);
  // Any number of them, none included.
  void operands(const Placeholder& name, std::vector<std::string>& values,
                const std::string& meaning);

  void flag(const std::string& name, bool& value, const std::string& meaning);
  void option(const std::string& name, const Placeholder& placeholder, std::string& value,
              const std::string& meaning);
  void option(const std::string& name, const Placeholder& placeholder,
              std::optional<std::string>& value, const std::string& meaning);
  void option(const std::string& name, const Placeholder& placeholder, int& value,
              NumberRange range, const std::string& meaning);
  // It may be given several times.
  void repeatedOption(const std::string& name, const Placeholder& placeholder,
                      std::vector<std::string>& values, const std::string& meaning);

  // One of them has to be named.
  void commands(std::span<const Command> commands);
  // What --help says beyond all these.
  void help(const std::string& text);

  // The parser of the whole program, and what its commands said.
  const CLI::App& root() const;
  const Grammar& grammar() const { return grammar_; }

 private:
  void setPlaceholder(CLI::Option* option, const Placeholder& placeholder);

  CLI::App& parser_;
  Grammar& grammar_;
};

// The arguments in the parser's own (reversed) order, those that it would misread marked. File
// names are any bytes, so nothing in them may mean anything to the parser: "[a]", "++" and whatever
// follows "--" reach the commands as they were given.
std::vector<std::string> protectedArguments(int argc, char** argv);
// An argument as it was given.
std::string unmarked(const std::string& argument);

}  // namespace kolum::tool

#endif
