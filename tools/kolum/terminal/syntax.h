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

namespace CLI {
class App;
}

namespace kolum::tool {

// The actions of commands that do something themselves, by their parsers.
using Actions = std::map<const CLI::App*, Action>;

struct NumberRange {
  int least;
  int most;
};

// The variables given to it are written while the command line is parsed. All names of options are
// as CLI11 takes them ("-0,--null"). Those that take one value refuse a second, those of numbers
// what is none in their range.
class Syntax {
 public:
  Syntax(CLI::App& parser, Actions& actions) : parser_(parser), actions_(actions) {}

  void operand(const std::string& name, std::string& value, const std::string& meaning);
  void operand(const std::string& name, int& value, NumberRange range, const std::string& meaning);
  // Any number of them, none included.
  void operands(const std::string& name, std::vector<std::string>& values,
                const std::string& meaning);

  void flag(const std::string& name, bool& value, const std::string& meaning);
  // PLACEHOLDER stands for the value in the help.
  void option(const std::string& name, const std::string& placeholder, std::string& value,
              const std::string& meaning);
  void option(const std::string& name, const std::string& placeholder,
              std::optional<std::string>& value, const std::string& meaning);
  void option(const std::string& name, const std::string& placeholder, int& value,
              NumberRange range, const std::string& meaning);
  // It may be given several times.
  void repeatedOption(const std::string& name, const std::string& placeholder,
                      std::vector<std::string>& values, const std::string& meaning);

  // One of them has to be named.
  void commands(std::span<const Command> commands);
  // What --help says beyond all these.
  void help(const std::string& text);

  // The parser of the whole program.
  const CLI::App& root() const;

 private:
  CLI::App& parser_;
  Actions& actions_;
};

// The arguments in the parser's own (reversed) order, those that it would misread marked. File
// names are any bytes, so nothing in them may mean anything to the parser: "[a]", "++" and whatever
// follows "--" reach the commands as they were given.
std::vector<std::string> protectedArguments(int argc, char** argv);
// An argument as it was given.
std::string unmarked(const std::string& argument);

}  // namespace kolum::tool

#endif
