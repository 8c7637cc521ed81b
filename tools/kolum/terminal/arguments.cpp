#include "terminal/arguments.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <string_view>

#include "terminal/name_list.h"
#include "terminal/syntax.h"

namespace kolum::tool {

namespace {

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

}  // namespace

void addAudioStreamOption(Syntax& syntax, int& index) {
  syntax.option("--audio-stream", {"N"}, index, {0, INT_MAX},
                "The audio stream to describe, from 0; the first if it does not exist");
}

void addFileArguments(Syntax& syntax, FileArguments& arguments, Words (*leadingWords)()) {
  syntax.operands({"FILE", Offer::kFiles, leadingWords}, arguments.operands,
                  "Files; \"-\" reads names from standard input");
  syntax.option("--files-from", {"LIST", Offer::kFiles}, arguments.listFile,
                "Reads file names from LIST, NUL- or newline-separated");
  syntax.flag("-0,--null", arguments.isNulSeparated, "Names in lists end with NUL only");
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
