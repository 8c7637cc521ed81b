#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/descriptor.h"
#include "commands/library.h"
#include "describe/media_path.h"
#include "files/library.h"
#include "files/selection.h"
#include "scan/walk.h"
#include "terminal/interruption.h"

namespace kolum::tool {

namespace {

struct Options {
  std::string library;
  std::vector<std::string> roots;
  std::vector<std::string> excluded;
  bool byContent = false;
  bool isNulSeparated = false;
};

// A library that does not exist yet knows nothing; "library add" may be making it at the other end
// of the pipe.
std::unique_ptr<scan::Store> knownFiles(const std::string& library) {
  try {
    return std::make_unique<scan::Store>(libraryFile(library), documentVersion(),
                                         scan::Store::Access::kRead);
  } catch (const scan::StoreError& error) {
    if (error.kind() != scan::StoreError::Kind::kMissing) throw;
    return nullptr;
  }
}

class Staleness {
 public:
  Staleness(Context& context, const Options& options)
      : context_(context),
        store_(knownFiles(options.library)),
        selection_(mediaSelection(options.excluded, options.byContent)),
        names_(context, options.isNulSeparated) {}

  void root(const std::string& given) {
    struct stat status = {};
    if (stat(given.c_str(), &status) != 0)
      return context_.fail(given, std::string_view(std::strerror(errno)));
    if (S_ISDIR(status.st_mode)) return tree(given);
    if (!S_ISREG(status.st_mode)) return context_.fail(given, "not a file or folder");
    const std::string path = resolvedPath(given);
    const std::size_t slash = path.rfind('/');
    const scan::FilePath file = {path.substr(0, slash + 1), path.substr(slash + 1)};
    const auto known = store_ == nullptr ? std::nullopt : store_->file(file);
    compare(given, known ? &*known : nullptr, scan::identityOf(status));
  }

 private:
  void tree(const std::string& given) {
    auto root = std::make_shared<Descriptor>(
        open(given.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK));
    if (!root->isOpen()) return context_.fail(given, std::string_view(std::strerror(errno)));
    scan::FolderReader reader(root, std::make_shared<scan::Pulse>(), selection_, {});
    scan::PendingFolders pending;
    const std::string shown = describe::withSlash(given);
    const std::string resolved = describe::withSlash(resolvedPath(given));
    while (const auto folder = pending.next()) {
      auto end = readFolder(reader, *folder, shown, resolved);
      if (end) pending.enter(std::move(*end));
    }
  }

  // FOLDER is below the root, whose name is SHOWN to people, and RESOLVED in the library.
  std::optional<scan::FolderEnd> readFolder(scan::FolderReader& reader, const std::string& folder,
                                            const std::string& shown, const std::string& resolved) {
    std::vector<scan::SeenFile> files;
    auto end = reader.read(folder, [&](scan::Piece&& piece) {
      Interruption::check();
      std::move(piece.files.begin(), piece.files.end(), std::back_inserter(files));
      if (piece.error != 0)
        context_.fail(shown + folder, std::string_view(std::strerror(piece.error)));
      return true;
    });
    std::sort(files.begin(), files.end(),
              [](const auto& a, const auto& b) { return a.name < b.name; });
    const scan::KnownFolder known =
        store_ == nullptr ? scan::KnownFolder() : store_->folder(resolved + folder);
    auto next = known.files.begin();
    for (const scan::SeenFile& file : files) {
      while (next != known.files.end() && next->name < file.name) ++next;
      const bool isKnown = next != known.files.end() && next->name == file.name;
      seen(shown + folder + file.name, file, isKnown ? &*next : nullptr);
    }
    return end;
  }

  void seen(const std::string& path, const scan::SeenFile& file, const scan::Known* known) {
    if (file.error == 0) return compare(path, known, file.identity);
    if (file.error != ENOENT) context_.fail(path, std::string_view(std::strerror(file.error)));
  }

  void compare(const std::string& path, const scan::Known* known, const scan::Identity& identity) {
    if (known != nullptr && isUnchanged(*known, identity)) return;
    if (!context_.json) return names_.print(path);
    Result result = Result::ofFile(path);
    result.data("change", known == nullptr ? "new" : "changed");
    context_.printer.block(result);
  }

  Context& context_;
  std::unique_ptr<scan::Store> store_;
  scan::Selection selection_;
  NamePrinter names_;
};

void run(Context& context, const Options& options) {
  if (options.roots.empty()) throw UsageError("ROOT is required");
  const Interruption interruption;
  Staleness staleness(context, options);
  for (const std::string& root : options.roots) staleness.root(root);
}

}  // namespace

Action defineLibraryStale(Syntax& syntax) {
  auto options = std::make_shared<Options>();
  syntax.operands({"ROOT", Offer::kFiles}, options->roots, "Folders to walk, or files");
  syntax.flag("--all", options->byContent, "Lists files with any name, for \"kolum probe --all\"");
  addExcludeOption(syntax, options->excluded);
  addNullFlag(syntax, options->isNulSeparated);
  addLibraryOption(syntax, options->library);
  syntax.help(
      "Prints the media files that the library does not know as they are now: new ones, changed\n"
      "ones, and those that an earlier release described. Nothing of them is read.\n"
      "\nExamples:\n"
      "  kolum library stale /share\n"
      "  kolum library stale -0 /share | kolum probe --json - | kolum library add");
  return [options](Context& context) { run(context, *options); };
}

}  // namespace kolum::tool
