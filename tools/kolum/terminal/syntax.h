// A command's syntax: its operands, options, sub-commands and help text. Hides the parser's
// library, whose headers take long to compile.
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

// What commands declare beyond what the parser stores.
struct Grammar {
  std::map<const CLI::App*, Action> actions;  // of commands without sub-commands
  std::map<const CLI::Option*, Placeholder> placeholders;
};

struct NumberRange {
  int least;
  int most;
};

// The variables passed to it are written while the command line is parsed. Option names are written
// as CLI11 takes them ("-0,--null"). Options with one value reject a second; those with a number
// reject anything outside its range.
class Syntax {
 public:
  Syntax(CLI::App& parser, Grammar& grammar) : parser_(parser), grammar_(grammar) {}

  void operand(const Placeholder& name, std::string& value, const std::string& meaning);
  void operand(const Placeholder& name, int& value, NumberRange range, const std::string& meaning);
  // Any number of values, including none.
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

  // One of them must be given.
  void commands(std::span<const Command> commands);
  // The rest of the --help text.
  void help(const std::string& text);

  // The parser of the whole program, and what its commands declared.
  const CLI::App& root() const;
  const Grammar& grammar() const { return grammar_; }

 private:
  void setPlaceholder(CLI::Option* option, const Placeholder& placeholder);

  CLI::App& parser_;
  Grammar& grammar_;
};

// The arguments in the parser's own (reversed) order, with those marked that it would misread. File
// names are any bytes, so nothing in them may mean anything to the parser: "[a]", "++" and
// everything after "--" reach the commands unchanged.
std::vector<std::string> protectedArguments(int argc, char** argv);
// An argument without its mark.
std::string unmarked(const std::string& argument);

}  // namespace kolum::tool

#endif
