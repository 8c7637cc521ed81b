// The sub-commands of "kolum library", and how they print files.
#ifndef KOLUM_TOOL_COMMANDS_LIBRARY_H
#define KOLUM_TOOL_COMMANDS_LIBRARY_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "scan/query.h"
#include "scan/store.h"
#include "terminal/command.h"
#include "terminal/context.h"
#include "terminal/output.h"
#include "terminal/syntax.h"

namespace kolum::tool {

Action defineLibraryAdd(Syntax& syntax);
Action defineLibraryExport(Syntax& syntax);
Action defineLibraryFind(Syntax& syntax);
Action defineLibraryForget(Syntax& syntax);
Action defineLibraryProblems(Syntax& syntax);
Action defineLibraryReport(Syntax& syntax);
Action defineLibraryStale(Syntax& syntax);
Action defineLibraryStatus(Syntax& syntax);

scan::Store libraryToRead(const std::string& file);

// "PATH..." of commands that look at part of the library.
void addPathOperands(Syntax& syntax, std::vector<std::string>& paths);
// Calls VISIT for the files that fit, below each of PATHS (all if there is none). A path below
// which nothing is known is reported.
void forEachFound(Context& context, scan::Store& store, scan::FileQuery query,
                  const std::vector<std::string>& paths,
                  const std::function<void(const scan::FoundFile&)>& visit);

Result errorResult(const scan::Reason& reason);
// A file's document with what the library knows besides, in the keys that "library add" reads.
// Empty if the stored document is none, which is reported.
std::optional<Result> foundResult(Context& context, const scan::FoundFile& file);
// The documents of the files that fit, or a table of them.
void printDocuments(Context& context, scan::Store& store, const scan::FileQuery& query,
                    const std::vector<std::string>& paths);
void printTable(Context& context, scan::Store& store, const scan::FileQuery& query,
                const std::vector<std::string>& paths);
void addTableFlag(Syntax& syntax, bool& asCsv);
const char* stateName(scan::State state);

// Prints names for other programs: one per line, or with NUL after each. A name with a newline has
// no place among lines: it is reported. On a terminal, names are made safe.
class NamePrinter {
 public:
  NamePrinter(Context& context, bool isNulSeparated)
      : context_(context),
        isNulSeparated_(isNulSeparated),
        isShown_(context.channels.areResultsShown()) {}

  void print(const std::string& name);

 private:
  Context& context_;
  bool isNulSeparated_;
  bool isShown_;
};

void addNullFlag(Syntax& syntax, bool& isNulSeparated);

}  // namespace kolum::tool

#endif
