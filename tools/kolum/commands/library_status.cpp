#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "commands/library.h"
#include "files/library.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

struct StateCount {
  const char* key;
  const char* label;
  std::uint64_t scan::Counts::*count;
};

constexpr StateCount kStateCounts[] = {
    {"known", "Known", &scan::Counts::known},
    {"failed", "Failed", &scan::Counts::failed},
    {"suspect", "Suspect", &scan::Counts::suspect},
    {"quarantined", "In quarantine", &scan::Counts::quarantined},
};

void addKinds(Result& result, scan::Store& store) {
  Result kinds;
  std::vector<std::string> parts;
  for (const auto& [kind, count] : store.countsByKind()) {
    kinds.data(kind, count);
    parts.push_back(std::to_string(count) + " " + kind);
  }
  result.data("kinds", kinds);
  if (!parts.empty()) result.show("Kinds", joined(parts));
}

void addRoots(Result& result, scan::Store& store) {
  std::vector<Result> roots;
  for (const scan::Root& root : store.roots()) {
    Result row = Result::ofFile(root.folder);
    row.data("scannedAt", root.scannedAt);
    row.show("Scanned", dateText(root.scannedAt));
    roots.push_back(std::move(row));
  }
  result.list("roots", std::move(roots));
}

void run(Context& context, const std::string& library) {
  scan::Store store = libraryToRead(library);
  Result result = Result::ofFile(store.file());
  const scan::Counts counts = store.counts();
  result.number("files", "Files", static_cast<std::int64_t>(counts.files()));
  result.number("folders", "Folders", static_cast<std::int64_t>(counts.folders));
  for (const StateCount& row : kStateCounts)
    result.number(row.key, row.label, static_cast<std::int64_t>(counts.*row.count));
  addKinds(result, store);
  addRoots(result, store);
  context.printer.block(result);
}

}  // namespace

Action defineLibraryStatus(Syntax& syntax) {
  auto library = std::make_shared<std::string>();
  addLibraryOption(syntax, *library);
  syntax.help(
      "Prints where the library is, how many files are in it, and when their folders were\n"
      "scanned.\n"
      "\nExample:\n  kolum library status --json");
  return [library](Context& context) { run(context, *library); };
}

}  // namespace kolum::tool
