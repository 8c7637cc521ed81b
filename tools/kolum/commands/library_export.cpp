#include <memory>
#include <string>
#include <vector>

#include "commands/library.h"
#include "files/library.h"

namespace kolum::tool {

namespace {

struct Options {
  std::string library;
  std::vector<std::string> paths;
  bool asCsv = false;
};

void run(Context& context, const Options& options) {
  if (context.json == options.asCsv) throw UsageError("either --json or --csv is required");
  scan::Store store = libraryToRead(options.library);
  if (options.asCsv) return printTable(context, store, {}, options.paths);
  printDocuments(context, store, {}, options.paths);
}

}  // namespace

Action defineLibraryExport(Syntax& syntax) {
  auto options = std::make_shared<Options>();
  addPathOperands(syntax, options->paths);
  addTableFlag(syntax, options->asCsv);
  addLibraryOption(syntax, options->library);
  syntax.help(
      "Prints what is known of every file: as JSON Lines, which \"kolum library add\" takes into\n"
      "another library, or as a table.\n"
      "\nExamples:\n"
      "  kolum library export --json >library.jsonl\n"
      "  kolum library export --csv /share/Music >music.csv");
  return [options](Context& context) { run(context, *options); };
}

}  // namespace kolum::tool
