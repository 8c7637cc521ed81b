#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "commands/library.h"
#include "files/documents.h"
#include "files/library.h"
#include "terminal/interruption.h"
#include "terminal/line_reader.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

using Clock = std::chrono::steady_clock;
using What = LineReader::What;

// A library takes documents up to 1 MiB; names and errors come on top.
constexpr std::size_t kLongestLine = (std::size_t{1} << 20) + 65536;
constexpr std::chrono::milliseconds kCommitEvery(1000);
// So that a line of less than a second's work does not come in between.
constexpr std::chrono::milliseconds kCommitMargin(100);

struct Options {
  std::string library;
  bool waits = false;
};

// The named file as it is now.
struct PresentFile {
  scan::FilePath path;
  scan::Identity identity;
};

PresentFile presentFile(const std::string& name) {
  char path[PATH_MAX];
  struct stat status = {};
  if (realpath(name.c_str(), path) == nullptr || lstat(path, &status) != 0)
    throw DocumentError(name + ": " + std::strerror(errno));
  if (!S_ISREG(status.st_mode)) throw DocumentError(name + ": not a file");
  const std::string full = path;
  const std::size_t slash = full.rfind('/');
  return {{full.substr(0, slash + 1), full.substr(slash + 1)}, scan::identityOf(status)};
}

bool isSame(const DocumentLine& line, const scan::Identity& present) {
  return line.size.value_or(present.size) == present.size &&
         line.modifiedNs.value_or(present.mtimeNs) == present.mtimeNs;
}

class Adding {
 public:
  Adding(Context& context, scan::Store& store)
      : context_(context), store_(store), lines_(context.channels.input(), kLongestLine) {}

  void all() {
    try {
      while (step()) {
      }
    } catch (const Interrupted&) {
      commit();
      throw;
    }
    commit();
    print();
  }

 private:
  // One line, or a commit. False at the end.
  bool step() {
    switch (lines_.next(untilCommit())) {
      case What::kEnd:
        return false;
      case What::kNothingYet:
        commit();
        return true;
      case What::kTooLong:
        refuse("longer than " + std::to_string(kLongestLine) + " bytes");
        break;
      case What::kLine:
        line();
        break;
    }
    if (untilCommit() <= kCommitMargin) commit();
    return true;
  }

  // Nothing to commit: no limit.
  std::optional<std::chrono::milliseconds> untilCommit() const {
    if (!store_.isInBatch()) return std::nullopt;
    return std::max(std::chrono::milliseconds(0),
                    std::chrono::duration_cast<std::chrono::milliseconds>(due_ - Clock::now()));
  }

  void line() {
    if (lines_.line().empty()) return;
    try {
      put(parsedLine(lines_.line()));
    } catch (const DocumentError& error) {
      refuse(error.what());
    } catch (const scan::StoreError& error) {
      if (error.kind() != scan::StoreError::Kind::kBadDocument) throw;
      refuse(error.what());
    }
  }

  void put(const DocumentLine& line) {
    const PresentFile file = presentFile(line.file);
    if (!isSame(line, file.identity))
      throw DocumentError(line.file + ": has changed since it was described");
    begin();
    if (line.error) {
      store_.putFailure(file.path, file.identity, scan::State::kFailed, *line.error);
      ++failures_;
    } else {
      store_.putDocument(file.path, file.identity, line.document);
      ++documents_;
    }
  }

  void begin() {
    if (store_.isInBatch()) return;
    store_.begin();
    due_ = Clock::now() + kCommitEvery;
  }

  void commit() {
    if (store_.isInBatch()) store_.commit();
  }

  void refuse(const std::string& why) {
    ++refused_;
    context_.fail("standard input",
                  std::string_view("line " + std::to_string(lines_.number()) + ": " + why));
  }

  void print() {
    Result result;
    result.data("added", documents_);
    result.data("failures", failures_);
    result.data("refused", refused_);
    result.show("Added", counted(documents_, "document"));
    if (failures_ != 0) result.show("Noted", counted(failures_, "failure"));
    if (refused_ != 0) result.show("Refused", counted(refused_, "line"));
    context_.printer.block(result);
  }

  Context& context_;
  scan::Store& store_;
  LineReader lines_;
  Clock::time_point due_;  // of the batch
  std::uint64_t documents_ = 0;
  std::uint64_t failures_ = 0;
  std::uint64_t refused_ = 0;
};

void run(Context& context, const Options& options) {
  if (context.channels.input() < 0) return context.fail("standard input", std::strerror(EBADF));
  const Interruption interruption;
  scan::Store store(libraryFile(options.library), documentVersion(), [&] {
    Interruption::check();
    return options.waits;
  });
  Adding(context, store).all();
}

}  // namespace

Action defineLibraryAdd(Syntax& syntax) {
  auto options = std::make_shared<Options>();
  syntax.flag("--wait", options->waits, "Waits while a scan uses the library");
  addLibraryOption(syntax, options->library);
  syntax.help(
      "Reads the lines of \"kolum probe --json\" from standard input and writes them into the\n"
      "library; lines with \"error\" count as failures of their files. What a line describes must\n"
      "exist. Lines that make no sense are reported by their number, and the rest is taken.\n"
      "\nExamples:\n"
      "  kolum probe --json /share/Videos | kolum library add\n"
      "  kolum library stale -0 /share | kolum probe --json - | kolum library add");
  return [options](Context& context) { run(context, *options); };
}

}  // namespace kolum::tool
