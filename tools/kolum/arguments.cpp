#include "arguments.h"

#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <functional>
#include <string_view>
#include <utility>

#include "name_list.h"
#include "numbers.h"

namespace kolum::tool {

namespace {

constexpr char kMark = '\x01';
constexpr int kAnyNumber = 1 << 29;

bool wouldBeMisread(std::string_view argument) {
  return argument == "++" || argument == "%%" || argument.starts_with('[') ||
         argument.starts_with('{') || argument.starts_with(kMark);
}

void forEachInList(Context& context, const std::string& listFile, bool byNul,
                   const std::function<void(const std::string&)>& visit) {
  const bool standardInput = listFile == "-";
  const std::string shown = standardInput ? "standard input" : listFile;
  const int descriptor =
      standardInput ? context.channels.input() : open(listFile.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return context.fail(shown, std::strerror(standardInput ? EBADF : errno));
  const auto failure =
      forEachNameIn(descriptor, byNul ? NameEnd::kNul : NameEnd::kFirstThatComes, visit);
  if (!standardInput) close(descriptor);
  if (failure) context.fail(shown, std::string_view(failure->reason));
}

// An option that takes one value. The parser is given leave to take several, so that the message
// for them is ours.
CLI::Option* addSingle(CLI::App& command, const std::string& name, const std::string& description,
                       std::function<void(const std::string&)> take) {
  const auto takeOnly = [name, take = std::move(take)](const CLI::results_t& results) {
    if (results.size() > 1) throw UsageError(name + " is given more than once");
    take(unmarked(results.back()));
    return true;
  };
  return command.add_option(name, takeOnly, description)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

}  // namespace

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

CLI::Option* addText(CLI::App& command, const std::string& name, std::string& value,
                     const std::string& description) {
  const auto take = [&value](const std::string& text) { value = text; };
  return addSingle(command, name, description, take)->type_name("");
}

CLI::Option* addTexts(CLI::App& command, const std::string& name, std::vector<std::string>& values,
                      const std::string& description) {
  const auto take = [&values](const CLI::results_t& results) {
    values.clear();
    for (const std::string& result : results) values.push_back(unmarked(result));
    return true;
  };
  return command.add_option(name, take, description)
      ->expected(1, kAnyNumber)
      ->allow_extra_args()
      ->type_name("");
}

CLI::Option* addNumber(CLI::App& command, const std::string& name, int& value, NumberRange range,
                       const std::string& description) {
  const auto take = [name, range, &value](const std::string& text) {
    const auto number = parseNumber(text);
    if (!number || *number < range.least || *number > range.most) {
      throw UsageError(name + " takes a number from " + std::to_string(range.least) + " to " +
                       std::to_string(range.most) + ", not \"" + text + "\"");
    }
    value = static_cast<int>(*number);
  };
  return addSingle(command, name, description, take)->type_name("N");
}

void addAudioStreamOption(CLI::App& command, int& index) {
  addNumber(command, "--audio-stream", index, {0, INT_MAX},
            "The audio stream that counts, from 0; beyond the last the first");
}

void addFileArguments(CLI::App& command, FileArguments& arguments) {
  addTexts(command, "FILE", arguments.operands, "Files; \"-\" reads names from standard input");
  addText(command, "--files-from", arguments.listFile,
          "Reads file names from LIST, NUL- or newline-separated")
      ->type_name("LIST");
  command.add_flag("-0,--null", arguments.isNulSeparated, "Names in lists end with NUL only");
}

void requireNames(const FileArguments& arguments) {
  if (arguments.operands.empty() && arguments.listFile.empty())
    throw UsageError("FILE is required");
}

void forEachName(Context& context, const FileArguments& arguments,
                 const std::function<void(const std::string&)>& visit) {
  requireNames(arguments);
  for (const std::string& operand : arguments.operands) {
    if (operand == "-") {
      forEachInList(context, operand, arguments.isNulSeparated, visit);
    } else {
      visit(operand);
    }
  }
  if (!arguments.listFile.empty())
    forEachInList(context, arguments.listFile, arguments.isNulSeparated, visit);
}

}  // namespace kolum::tool
