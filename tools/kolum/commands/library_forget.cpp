#include <memory>
#include <string>
#include <vector>

#include "commands/library.h"
#include "describe/media_path.h"
#include "files/library.h"
#include "terminal/interruption.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

struct Options {
  std::string library;
  bool waits = false;
  std::vector<std::string> paths;
};

// How many files that were.
std::uint64_t forget(scan::Store& store, const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const scan::FilePath file = {path.substr(0, slash + 1), path.substr(slash + 1)};
  std::uint64_t removed = 0;
  if (store.file(file)) {
    store.removeFile(file);
    ++removed;
  }
  return removed + store.removeTree(describe::withSlash(path));
}

void run(Context& context, const Options& options) {
  if (options.paths.empty()) throw UsageError("PATH is required");
  const Interruption interruption;
  const std::string file = libraryFile(options.library);
  libraryToRead(file);  // a new library would have nothing to forget
  scan::Store store(file, documentVersion(), [&] {
    Interruption::check();
    return options.waits;
  });
  for (const std::string& path : options.paths) {
    Interruption::check();
    const std::uint64_t removed = forget(store, resolvedPath(path));
    if (removed == 0) {
      context.fail(path, "not in the library");
      continue;
    }
    Result result = Result::ofFile(path);
    result.data("forgotten", removed);
    result.show("Forgotten", counted(removed, "file"));
    context.printer.block(result);
  }
}

}  // namespace

Action defineLibraryForget(Syntax& syntax) {
  auto options = std::make_shared<Options>();
  syntax.operands({"PATH", Offer::kFiles}, options->paths,
                  "Files, or folders with everything in them; they need not exist");
  syntax.flag("--wait", options->waits, "Waits while a scan uses the library");
  addLibraryOption(syntax, options->library);
  syntax.help(
      "Takes files out of the library; the files themselves stay. The next scan of their folders\n"
      "takes them for new ones.\n"
      "\nExample:\n  kolum library forget /share/Old");
  return [options](Context& context) { run(context, *options); };
}

}  // namespace kolum::tool
