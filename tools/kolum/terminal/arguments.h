// Arguments that commands share: file names, and the lists that they come from.
#ifndef KOLUM_TOOL_TERMINAL_ARGUMENTS_H
#define KOLUM_TOOL_TERMINAL_ARGUMENTS_H

#include <functional>
#include <string>
#include <vector>

#include "terminal/context.h"
#include "terminal/syntax.h"

namespace kolum::tool {

// --audio-stream, for commands that describe videos.
void addAudioStreamOption(Syntax& syntax, int& index);

// The "FILE..." operands and --files-from, for every command that takes files.
struct FileArguments {
  std::vector<std::string> operands;
  std::string listFile;
  bool isNulSeparated = false;
};

// LEADINGWORDS: words that may precede the files.
void addFileArguments(Syntax& syntax, FileArguments& arguments, Words (*leadingWords)() = nullptr);

// Throws UsageError if no names were given.
void requireNames(const FileArguments& arguments);

// Calls VISIT for all names in order: the operands, with "-" replaced by the list on standard
// input, then the list of --files-from. Names in lists are visited as they come. A list that cannot
// be read is reported. Requires names.
void forEachName(Context& context, const FileArguments& arguments,
                 const std::function<void(const std::string&)>& visit);

}  // namespace kolum::tool

#endif
