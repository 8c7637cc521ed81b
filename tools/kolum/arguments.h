// Operands of the command line. File names are any bytes, so nothing in them may mean anything to
// the parser: "[a]", "++" and whatever follows "--" reach the commands as they were given.
#ifndef KOLUM_TOOL_ARGUMENTS_H
#define KOLUM_TOOL_ARGUMENTS_H

#include <functional>
#include <string>
#include <vector>

#include "context.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace kolum::tool {

// The arguments in the parser's own (reversed) order, those that it would misread marked.
std::vector<std::string> protectedArguments(int argc, char** argv);
// An argument as it was given.
std::string unmarked(const std::string& argument);

// An option or operand that takes one text, or operands that take any number; the marks are removed
// again. Use these for every text, whether it names a file or not.
CLI::Option* addText(CLI::App& command, const std::string& name, std::string& value,
                     const std::string& description);
CLI::Option* addTexts(CLI::App& command, const std::string& name, std::vector<std::string>& values,
                      const std::string& description);

// An option that takes a whole number, and refuses any outside the range.
struct NumberRange {
  int least;
  int most;
};
CLI::Option* addNumber(CLI::App& command, const std::string& name, int& value, NumberRange range,
                       const std::string& description);
// --audio-stream, for commands that describe videos.
void addAudioStreamOption(CLI::App& command, int& index);

// The "FILE..." operands with --files-from, as every command over files takes them.
struct FileArguments {
  std::vector<std::string> operands;
  std::string listFile;
  bool isNulSeparated = false;
};

void addFileArguments(CLI::App& command, FileArguments& arguments);

// Throws UsageError when no name was asked for.
void requireNames(const FileArguments& arguments);

// Calls VISIT for all names in order: the operands, "-" replaced by the list on standard input,
// then the list of --files-from. Names of lists are visited as they come. A list that cannot be
// read is reported. Requires names.
void forEachName(Context& context, const FileArguments& arguments,
                 const std::function<void(const std::string&)>& visit);

}  // namespace kolum::tool

#endif
