#include "commands/library.h"

#include <nlohmann/json.hpp>

#include "base/moment.h"
#include "describe/media_path.h"
#include "files/columns.h"
#include "files/documents.h"
#include "files/library.h"
#include "terminal/text.h"

namespace kolum::tool {

scan::Store libraryToRead(const std::string& file) {
  return {libraryFile(file), documentVersion(), scan::Store::Access::kRead};
}

void addPathOperands(Syntax& syntax, std::vector<std::string>& paths) {
  syntax.operands({"PATH", Offer::kFiles}, paths,
                  "Files, or folders with everything in them; all that is known if there is none");
}

void addNullFlag(Syntax& syntax, bool& isNulSeparated) {
  syntax.flag("-0,--null", isNulSeparated, "Prints names with NUL after each instead of a newline");
}

void addTableFlag(Syntax& syntax, bool& asCsv) {
  syntax.flag("--csv", asCsv, "Prints a table of comma-separated values (RFC 4180)");
}

void forEachFound(Context& context, scan::Store& store, scan::FileQuery query,
                  const std::vector<std::string>& paths,
                  const std::function<void(const scan::FoundFile&)>& visit) {
  if (paths.empty()) return store.forEachFile(query, visit);
  for (const std::string& path : paths) {
    query.below = resolvedPath(path);
    const scan::FilePath file = {query.below->substr(0, query.below->rfind('/') + 1),
                                 query.below->substr(query.below->rfind('/') + 1)};
    if (!store.file(file) && !store.hasFilesBelow(describe::withSlash(*query.below))) {
      context.fail(path, "not in the library");
      continue;
    }
    store.forEachFile(query, visit);
  }
}

const char* stateName(scan::State state) {
  switch (state) {
    case scan::State::kKnown:
      return "known";
    case scan::State::kFailed:
      return "failed";
    case scan::State::kSuspect:
      return "suspect";
    case scan::State::kQuarantined:
      return "quarantined";
  }
  return "";
}

Result errorResult(const scan::Reason& reason) {
  Result error;
  error.data("code", reason.code);
  error.data("reason", reason.text);
  return error;
}

std::optional<Result> foundResult(Context& context, const scan::FoundFile& file) {
  Result result = Result::ofFile(file.path.full());
  try {
    if (!file.document.empty()) result.data(parsedObject(file.document));
  } catch (const DocumentError& error) {
    context.fail(file.path.full(), "its document is damaged: " + std::string(error.what()));
    return std::nullopt;
  }
  result.data("size", file.identity.size);
  result.data("modified", momentText(file.identity.mtimeNs));
  result.data("state", stateName(file.state));
  if (file.reason) result.data("error", errorResult(*file.reason));
  return result;
}

void printDocuments(Context& context, scan::Store& store, const scan::FileQuery& query,
                    const std::vector<std::string>& paths) {
  forEachFound(context, store, query, paths, [&](const scan::FoundFile& file) {
    if (const auto result = foundResult(context, file)) context.printer.block(*result);
  });
}

void printTable(Context& context, scan::Store& store, const scan::FileQuery& query,
                const std::vector<std::string>& paths) {
  context.printer.csv(csvTitles(Columns::kOfLibrary));
  forEachFound(context, store, query, paths, [&](const scan::FoundFile& file) {
    if (const auto result = foundResult(context, file))
      context.printer.csv(csvRow(result->json(), Columns::kOfLibrary));
  });
}

void NamePrinter::print(const std::string& name) {
  const char end = isNulSeparated_ ? '\0' : '\n';
  if (isShown_) return context_.printer.raw(printable(name) + end);
  if (isNulSeparated_) return context_.printer.raw(name + end);
  if (name.find('\n') != std::string::npos)
    return context_.fail(name, "contains a newline; --null prints it");
  context_.printer.raw(name + "\n");
}

Action defineLibrary(Syntax& syntax) {
  static constexpr Command kCommands[] = {
      {"stale", "Prints what is new or changed", defineLibraryStale},
      {"add", "Takes documents from standard input", defineLibraryAdd},
      {"find", "Finds files by what is known of them", defineLibraryFind},
      {"problems", "What failed, why, and how to retry", defineLibraryProblems},
      {"export", "Prints everything as JSON or CSV", defineLibraryExport},
      {"report", "Makes a page for a browser", defineLibraryReport},
      {"status", "What is in the library", defineLibraryStatus},
      {"forget", "Takes files out of the library", defineLibraryForget},
  };
  syntax.commands(kCommands);
  syntax.help(
      "The library: what \"kolum scan\" found in media files, in an SQLite database that any\n"
      "SQL client reads.\n"
      "\nExamples:\n"
      "  kolum library find --kind video --codec HEVC --size 4G..\n"
      "  kolum library stale -0 /share | kolum probe --json - | kolum library add");
  return nullptr;
}

}  // namespace kolum::tool
