#include <sys/random.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "commands/library.h"
#include "files/documents.h"
#include "files/library.h"
#include "report/new_file.h"
#include "report/packed_text.h"
#include "report/page.h"
#include "report/summary.h"
#include "terminal/interruption.h"
#include "terminal/text.h"

namespace kolum::tool {

namespace {

using Json = nlohmann::ordered_json;
using Sink = PackedText::Sink;

constexpr const char* kStandardOutput = "-";

struct Options {
  std::string library;
  std::string out;
  std::vector<std::string> paths;
};

// Of this page, so that no text in it becomes a script.
std::string freshNonce() {
  unsigned char bytes[16];
  if (getrandom(bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes))
    throw FileError(std::strerror(errno));
  std::string nonce;
  for (const unsigned char byte : bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    nonce += kDigits[byte >> 4U];
    nonce += kDigits[byte & 15U];
  }
  return nonce;
}

std::string dumped(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

class Report {
 public:
  Report(Context& context, scan::Store& store, const Options& options)
      : context_(context), store_(store), options_(options) {}

  void write(const Sink& sink) {
    const std::string nonce = freshNonce();
    for (const PagePart& part : pageParts()) {
      sink({reinterpret_cast<const char*>(part.text.data()), part.text.size()});
      if (part.slot == "nonce") sink(nonce);
      if (part.slot == "files") writeFiles(sink);
      if (part.slot == "summary") writeSummary(sink);
    }
  }
  std::uint64_t files() const { return summary_.files(); }

 private:
  // A document that is damaged is reported, and the file counts as one of which nothing is known.
  Json documentOf(const scan::FoundFile& file) {
    if (file.document.empty()) return Json::object();
    try {
      return parsedObject(file.document);
    } catch (const DocumentError& error) {
      context_.fail(file.path.full(), "its document is damaged: " + std::string(error.what()));
      return Json::object();
    }
  }

  void writeFiles(const Sink& sink) {
    PackedText packed(sink);
    std::string_view next = "[";
    forEachFound(context_, store_, {}, options_.paths, [&](const scan::FoundFile& file) {
      Interruption::check();
      packed.write(next);
      packed.write(dumped(summary_.add(file, documentOf(file))));
      next = ",\n";
    });
    packed.write(summary_.files() == 0 ? "[]" : "]");
    packed.end();
  }

  void writeSummary(const Sink& sink) {
    Json json = summary_.json();
    json["program"] = "kolum " KOLUM_VERSION;
    json["made"] = dateText(std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()));
    json["library"] = printable(store_.file());
    json["paths"] = Json::array();
    for (const std::string& path : options_.paths) json["paths"].push_back(printable(path));
    PackedText packed(sink);
    packed.write(dumped(json));
    packed.end();
  }

  Context& context_;
  scan::Store& store_;
  const Options& options_;
  Summary summary_;
};

// Where a file is, or would be: the folder, whatever it is called, and the name in it.
struct Place {
  dev_t device = 0;
  ino_t folder = 0;
  std::string name;
  bool operator==(const Place&) const = default;
};

std::optional<Place> placeOf(const std::string& path) {
  const std::size_t slash = path.rfind('/') + 1;
  struct stat folder = {};
  if (stat(slash == 0 ? "." : path.substr(0, slash).c_str(), &folder) != 0) return std::nullopt;
  return Place{folder.st_dev, folder.st_ino, path.substr(slash)};
}

bool isSameFile(const std::string& one, const std::string& other) {
  struct stat a = {};
  struct stat b = {};
  if (stat(one.c_str(), &a) == 0 && stat(other.c_str(), &b) == 0)
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
  const auto place = placeOf(one);
  return place && place == placeOf(other);
}

// LIBRARY, of which all links are resolved, and what SQLite and scans keep beside it, some of which
// comes and goes.
void refuseLibrary(const std::string& out, const std::string& library) {
  if (isSameFile(out, library)) throw UsageError("OUT is the library itself");
  for (const char* suffix : {"-wal", "-shm", "-journal", ".lock"})
    if (isSameFile(out, library + suffix)) throw UsageError("OUT is a part of the library");
}

void writeFile(Context& context, Report& report, const std::string& out) {
  try {
    NewFile file(out);
    report.write([&](std::string_view text) { file.write(text); });
    file.commit();
  } catch (const FileError& error) {
    return context.fail(out, error.what());
  }
  Result result = Result::ofFile(out);
  result.number("files", "Files", static_cast<std::int64_t>(report.files()));
  context.printer.block(result);
}

void run(Context& context, const Options& options) {
  if (options.out.empty()) throw UsageError("OUT is required");
  const bool toStandardOutput = options.out == kStandardOutput;
  if (toStandardOutput && context.json)
    throw UsageError("--json has no place on standard output, where the page goes");
  const Interruption interruption;
  scan::Store store = libraryToRead(options.library);
  refuseLibrary(options.out, store.file());
  Report report(context, store, options);
  if (!toStandardOutput) return writeFile(context, report, options.out);
  report.write([&](std::string_view text) { context.printer.raw(text); });
}

}  // namespace

Action defineLibraryReport(Syntax& syntax) {
  auto options = std::make_shared<Options>();
  syntax.operand({"OUT", Offer::kFiles}, options->out,
                 "The page to write, or \"-\" for standard output");
  addPathOperands(syntax, options->paths);
  addLibraryOption(syntax, options->library);
  syntax.help(
      "Makes a page for a browser that shows what is in the library: files, hours and bytes by\n"
      "kind, codec, container, resolution, dynamic range and sound, photos by month, what\n"
      "televisions will not play and why, duplicates, problems, places on a map, and a table of\n"
      "all files to search, sort and filter. The page needs nothing else, no network either.\n"
      "OUT appears when it is complete, for its owner only; an earlier one is replaced.\n"
      "\nExamples:\n"
      "  kolum library report library.html\n"
      "  kolum library report music.html /share/Music");
  return [options](Context& context) { run(context, *options); };
}

}  // namespace kolum::tool
