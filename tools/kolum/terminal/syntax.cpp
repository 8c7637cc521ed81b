#include "terminal/syntax.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string_view>
#include <utility>

#include "terminal/context.h"
#include "terminal/numbers.h"

namespace kolum::tool {

namespace {

constexpr char kMark = '\x01';
constexpr int kAnyNumber = 1 << 29;

bool wouldBeMisread(std::string_view argument) {
  return argument == "++" || argument == "%%" || argument.starts_with('[') ||
         argument.starts_with('{') || argument.starts_with(kMark);
}

// The parser accepts several values here, so that the error message is ours.
CLI::Option* addSingle(CLI::App& parser, const std::string& name, const std::string& meaning,
                       std::function<void(const std::string&)> take) {
  const auto takeOnly = [name, take = std::move(take)](const CLI::results_t& results) {
    if (results.size() > 1) throw UsageError(name + " is given more than once");
    take(unmarked(results.back()));
    return true;
  };
  return parser.add_option(name, takeOnly, meaning)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->type_name("");
}

CLI::Option* addNumber(CLI::App& parser, const std::string& name, int& value, NumberRange range,
                       const std::string& meaning) {
  const auto take = [name, range, &value](const std::string& text) {
    const auto number = parseNumber(text);
    if (!number || *number < range.least || *number > range.most) {
      throw UsageError(name + " takes a number from " + std::to_string(range.least) + " to " +
                       std::to_string(range.most) + ", not \"" + text + "\"");
    }
    value = static_cast<int>(*number);
  };
  return addSingle(parser, name, meaning, take);
}

template <class Text>
CLI::Option* addText(CLI::App& parser, const std::string& name, Text& value,
                     const std::string& meaning) {
  return addSingle(parser, name, meaning, [&value](const std::string& text) { value = text; });
}

CLI::Option* addTexts(CLI::App& parser, const std::string& name, std::vector<std::string>& values,
                      const std::string& meaning) {
  const auto take = [&values](const CLI::results_t& results) {
    values.clear();
    for (const std::string& result : results) values.push_back(unmarked(result));
    return true;
  };
  return parser.add_option(name, take, meaning)->type_name("");
}

}  // namespace

void Syntax::operand(const Placeholder& name, std::string& value, const std::string& meaning) {
  grammar_.placeholders[addText(parser_, name.name, value, meaning)->required()] = name;
}

void Syntax::operand(const Placeholder& name, int& value, NumberRange range,
                     const std::string& meaning) {
  CLI::Option* operand = addNumber(parser_, name.name, value, range, meaning)->required();
  grammar_.placeholders[operand] = name;
}

void Syntax::operands(const Placeholder& name, std::vector<std::string>& values,
                      const std::string& meaning) {
  CLI::Option* operands = addTexts(parser_, name.name, values, meaning);
  operands->expected(1, kAnyNumber)->allow_extra_args();
  grammar_.placeholders[operands] = name;
}

void Syntax::flag(const std::string& name, bool& value, const std::string& meaning) {
  parser_.add_flag(name, value, meaning);
}

void Syntax::option(const std::string& name, const Placeholder& placeholder, std::string& value,
                    const std::string& meaning) {
  setPlaceholder(addText(parser_, name, value, meaning), placeholder);
}

void Syntax::option(const std::string& name, const Placeholder& placeholder,
                    std::optional<std::string>& value, const std::string& meaning) {
  setPlaceholder(addText(parser_, name, value, meaning), placeholder);
}

void Syntax::option(const std::string& name, const Placeholder& placeholder, int& value,
                    NumberRange range, const std::string& meaning) {
  setPlaceholder(addNumber(parser_, name, value, range, meaning), placeholder);
}

void Syntax::repeatedOption(const std::string& name, const Placeholder& placeholder,
                            std::vector<std::string>& values, const std::string& meaning) {
  CLI::Option* option = addTexts(parser_, name, values, meaning);
  option->expected(1)->allow_extra_args(false)->multi_option_policy(
      CLI::MultiOptionPolicy::TakeAll);
  setPlaceholder(option, placeholder);
}

void Syntax::setPlaceholder(CLI::Option* option, const Placeholder& placeholder) {
  option->type_name(placeholder.name);
  grammar_.placeholders[option] = placeholder;
}

void Syntax::commands(std::span<const Command> commands) {
  parser_.require_subcommand(1);
  for (const Command& command : commands) {
    CLI::App* nested = parser_.add_subcommand(command.name, command.summary);
    if (nested->get_description().empty()) nested->group("");  // not listed
    Syntax syntax(*nested, grammar_);
    if (Action action = command.define(syntax)) grammar_.actions[nested] = std::move(action);
  }
}

void Syntax::help(const std::string& text) {
  parser_.footer(text);
}

const CLI::App& Syntax::root() const {
  const CLI::App* app = &parser_;
  while (app->get_parent() != nullptr) app = app->get_parent();
  return *app;
}

std::vector<std::string> protectedArguments(int argc, char** argv) {
  std::vector<std::string> arguments;
  bool operandsOnly = false;
  for (int i = 1; i < argc; ++i) {
    std::string argument = argv[i];
    if (!operandsOnly && argument == "--") {
      operandsOnly = true;
      continue;
    }
    if (operandsOnly || wouldBeMisread(argument)) argument.insert(argument.begin(), kMark);
    arguments.push_back(std::move(argument));
  }
  std::reverse(arguments.begin(), arguments.end());
  return arguments;
}

std::string unmarked(const std::string& argument) {
  return argument.starts_with(kMark) ? argument.substr(1) : argument;
}

}  // namespace kolum::tool
