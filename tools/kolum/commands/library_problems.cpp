#include <memory>
#include <string>
#include <vector>

#include "commands/library.h"
#include "files/library.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

struct Options {
  std::string library;
  std::vector<std::string> paths;
};

// How the file gets another try, in words.
std::string retryText(scan::State state) {
  return state == scan::State::kSuspect ? "by the next scan, alone"
                                        : "when it changes, or by \"kolum scan --retry\"";
}

void print(Context& context, const scan::FoundFile& file) {
  Result result = Result::ofFile(file.path.full());
  result.data("state", stateName(file.state));
  result.show("State", stateName(file.state));
  result.data("error", errorResult(*file.reason));
  result.show("Reason", file.reason->text + " (" + file.reason->code + ")");
  result.data("lookedAt", file.lookedAt);
  result.show("Since", dateText(file.lookedAt));
  result.data("hasDocument", !file.document.empty());
  if (!file.document.empty()) result.show("Document", "an earlier one is kept");
  result.text("retry", "Tried again", retryText(file.state));
  context.printer.block(result);
}

void run(Context& context, const Options& options) {
  scan::Store store = libraryToRead(options.library);
  const scan::FileQuery query = {
      .states = {scan::State::kFailed, scan::State::kSuspect, scan::State::kQuarantined}};
  forEachFound(context, store, query, options.paths,
               [&](const scan::FoundFile& file) { print(context, file); });
}

}  // namespace

Action defineLibraryProblems(Syntax& syntax) {
  auto options = std::make_shared<Options>();
  addPathOperands(syntax, options->paths);
  addLibraryOption(syntax, options->library);
  syntax.help(
      "Lists the files that could not be described, with the reason, and how they get another\n"
      "try. Files in quarantine crashed their reader, or took too long or too much memory, twice.\n"
      "\nExample:\n  kolum library problems /share/Videos");
  return [options](Context& context) { run(context, *options); };
}

}  // namespace kolum::tool
