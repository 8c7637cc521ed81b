#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "commands/probe.h"
#include "commands/scan_prober.h"
#include "commands/scan_report.h"
#include "files/library.h"
#include "files/media_files.h"
#include "files/selection.h"
#include "isolation/isolation.h"
#include "machine/children.h"
#include "machine/protections.h"
#include "scan/store.h"
#include "scan/supervisor.h"
#include "scan/watch.h"
#include "terminal/command.h"
#include "terminal/context.h"
#include "terminal/interruption.h"
#include "terminal/syntax.h"

namespace kolum::tool {

namespace {

struct Options {
  std::vector<std::string> roots;
  std::string library;
  std::string progress;
  std::vector<std::string> excluded;
  int jobs = 0;
  std::string sandbox;
  int deadline = 0;
  int memory = 0;
  bool mountsImages = false;
  bool byContent = false;
  bool wantsFingerprint = false;
  bool wantsPlaces = false;
  bool isRetry = false;
  bool waits = false;
  bool watches = false;
};

constexpr int kLongestDeadline = 150;  // in seconds
constexpr int kMostMemory = 65536;

Words progressForms() {
  return {"json", "none"};
}

ScanReport::Form progressForm(const std::string& word) {
  if (word.empty()) return ScanReport::Form::kLine;
  if (word == "json") return ScanReport::Form::kJson;
  if (word == "none") return ScanReport::Form::kNone;
  throw UsageError("--progress takes \"json\" or \"none\"");
}

Words sandboxForms() {
  return {"on", "strict", "off"};
}

isolation::Mode sandboxMode(const std::string& word) {
  if (word == "on") return isolation::Mode::kOn;
  if (word == "strict") return isolation::Mode::kStrict;
  if (word == "off") return isolation::Mode::kOff;
  throw UsageError("--sandbox takes \"on\", \"strict\" or \"off\"");
}

// For all that is done about one file: questions to workers, one after the other, and a tool with a
// deadline of its own. What takes longer hangs where no worker is.
std::chrono::seconds longestTimeOfFile() {
  constexpr int kMostQuestions = 5;
  constexpr std::chrono::seconds kTimeOfTool{30};  // with that of osm_info
  const auto deadline = isolation::settings().deadline;
  return std::chrono::ceil<std::chrono::seconds>(kMostQuestions * deadline) + kTimeOfTool;
}

// A scan gives way to everything else on the machine.
void chooseIsolation(const Options& options) {
  constexpr std::size_t kMebibyte = std::size_t{1} << 20;
  isolation::Settings settings = isolation::settings();
  settings.isIdle = true;
  if (!options.sandbox.empty()) settings.mode = sandboxMode(options.sandbox);
  if (options.deadline > 0) settings.deadline = std::chrono::seconds(options.deadline);
  if (options.memory > 0) settings.memory = static_cast<std::size_t>(options.memory) * kMebibyte;
  isolation::configure(settings);
}

void cancelProbes() {
  isolation::stop();
  killChildren();
}

bool keepGoing() {
  return !Interruption::hasCome();
}

// Null unless places are wanted. What is once in the library is not read again soon, so a scan
// without an answer to a first question does not begin.
std::shared_ptr<geocode::PlaceFinder> placesOf(const Options& options) {
  if (!options.wantsPlaces) return nullptr;
  auto places = std::make_shared<geocode::PlaceFinder>(geocode::placeProgram());
  places->at(0, 0);
  return places;
}

// The scans of one command: one, or with --watch one for each of the changes.
class Scans {
 public:
  Scans(Context& context, const Options& options,
        const std::shared_ptr<geocode::PlaceFinder>& places)
      : context_(context),
        options_(options),
        report_(context, progressForm(options.progress), protectionsText()),
        selection_(mediaSelection(options.excluded, options.byContent)),
        prober_(fileProber({.byContent = options.byContent,
                            .mountsImages = options.mountsImages,
                            .wantsFingerprint = options.wantsFingerprint,
                            .places = places})) {
    for (const std::string& root : options.roots) roots_.push_back({.root = root});
  }

  void run() {
    if (options_.watches) return watch();
    report_.summary(scan(roots_, options_.waits), library_);
  }

  // What hangs in the kernel may use anything until the process is gone.
  bool hasThreadsLeft() const { return hasThreadsLeft_; }

 private:
  void watch() {
    scan::Watch watch({.roots = options_.roots, .selection = selection_},
                      std::make_shared<const scan::Storage>());
    // Before the first scan, so that nothing happens between the two.
    if (!watch.waitUntilReady(keepGoing)) return;
    noteObstacle(watch);
    report_.summary(scan(roots_, options_.waits), library_);
    while (const auto changes = watch.wait(keepGoing)) {
      noteObstacle(watch);
      // The library is free between scans, and another one may use it just now.
      const auto summary = scan(changes->isEverything ? roots_ : changes->targets, true);
      report_.changes(summary, library_);
      if (summary.isStopped) return;
    }
  }

  void noteObstacle(const scan::Watch& watch) {
    const std::string obstacle = watch.obstacle();
    if (obstacle.empty() || std::exchange(obstacle_, obstacle) == obstacle) return;
    context_.note("--watch", obstacle + "; everything is walked again every 15 minutes");
  }

  scan::ScanSummary scan(const std::vector<scan::Target>& targets, bool waits) {
    const auto store = openLibrary(waits);
    library_ = store->file();
    scan::Supervisor supervisor(
        *store, prober_, optionsFor(targets),
        {.isStopWanted = Interruption::hasCome,
         .cancelProbes = cancelProbes,
         .progress = [&](const scan::ScanProgress& progress) { report_.progress(progress); },
         .problem = [&](const std::string& path,
                        const std::string& text) { context_.note(path, text); }});
    // Unless it ends in good order, nobody knows what its threads still do.
    hasThreadsLeft_ = true;
    scan::ScanSummary summary = supervisor.run();
    leftBehind_ += summary.threadsLeftBehind;
    hasThreadsLeft_ = leftBehind_ != 0;
    if (summary.failed != 0 || summary.problems != 0 || summary.skipped != 0) context_.setFailed();
    return summary;
  }

  std::unique_ptr<scan::Store> openLibrary(bool waits) const {
    const std::string file = libraryFile(options_.library);
    const scan::Version version = documentVersion();
    if (!waits) return std::make_unique<scan::Store>(file, version, scan::Store::Access::kWrite);
    bool hasSaidSo = false;
    return std::make_unique<scan::Store>(file, version, [&] {
      if (!std::exchange(hasSaidSo, true))
        context_.note(file, "waiting until it is no longer in use");
      return keepGoing();
    });
  }

  scan::ScanOptions optionsFor(const std::vector<scan::Target>& targets) const {
    scan::ScanOptions options;
    options.targets = targets;
    options.selection = selection_;
    options.jobs = static_cast<std::size_t>(options_.jobs);
    options.processors = std::max(1U, std::thread::hardware_concurrency());
    options.isRetry = options_.isRetry;
    options.countsAhead = options_.progress != "none";
    options.fileLimit = longestTimeOfFile();
    return options;
  }

  Context& context_;
  const Options& options_;
  ScanReport report_;
  scan::Selection selection_;
  scan::Prober prober_;
  std::vector<scan::Target> roots_;
  std::string library_;
  std::string obstacle_;
  std::size_t leftBehind_ = 0;
  bool hasThreadsLeft_ = false;
};

void run(Context& context, const Options& options) {
  if (options.roots.empty()) throw UsageError("ROOT is required");
  chooseIsolation(options);
  const auto places = placesOf(options);
  if (places != nullptr && !places->trouble().empty()) return closePlaces(context, *places);
  const Interruption interruption;
  Scans scans(context, options, places);
  try {
    scans.run();
  } catch (const scan::StoreError& error) {
    Interruption::check();
    context.fail(error.what());
  }
  Interruption::check();
  if (places != nullptr) closePlaces(context, *places);
  if (!scans.hasThreadsLeft()) return;
  killChildren();
  _exit(context.failed() ? 1 : 0);
}

}  // namespace

Action defineScan(Syntax& syntax) {
  auto options = std::make_shared<Options>();
  syntax.operands({"ROOT", Offer::kFiles}, options->roots, "Folders of media");
  addLibraryOption(syntax, options->library);
  syntax.option("--jobs", {"N"}, options->jobs, {1, kMostJobs},
                "Files that are read at a time; else as the storage suggests");
  addExcludeOption(syntax, options->excluded);
  syntax.flag("--all", options->byContent, "Decides by the files' content, not by their names");
  syntax.option("--deadline", {"SECONDS"}, options->deadline, {1, kLongestDeadline},
                "Ends the reader of a file that takes longer; else 30");
  syntax.option("--memory", {"MIB"}, options->memory, {16, kMostMemory},
                "Ends the reader of a file that takes more; else 1024");
  syntax.option("--sandbox", {"FORM", Offer::kWords, sandboxForms}, options->sandbox,
                "\"strict\": only with all protections; \"off\": reads files in this process");
  syntax.flag("--fingerprint", options->wantsFingerprint, kFingerprintHelp);
  syntax.flag("--places", options->wantsPlaces, kPlacesHelp);
  syntax.flag("--images", options->mountsImages,
              "Mounts disc images that can be read in no other way");
  syntax.flag("--retry", options->isRetry, "Also tries files again that failed before");
  syntax.flag("--wait", options->waits, "Waits while another scan uses the library");
  syntax.flag("--watch", options->watches, "Goes on when it is done, and reads what changes");
  syntax.option("--progress", {"FORM", Offer::kWords, progressForms}, options->progress,
                "\"json\": one line per second for programs; \"none\"");
  syntax.help(
      "Describes the media in folders, as \"kolum probe\" does, and keeps what it finds in a\n"
      "library. The next scan only reads what is new or has changed. It may be stopped, or\n"
      "killed, at any time, and then goes on where it was.\n"
      "Symbolic links are not followed.\n"
      "\nExamples:\n"
      "  kolum scan /share\n"
      "  kolum scan --exclude Trailers --library media.db Movies Music\n"
      "  kolum scan --watch /share\n"
      "  kolum scan --progress json /share | jq .progress");
  return [options](Context& context) { run(context, *options); };
}

}  // namespace kolum::tool
