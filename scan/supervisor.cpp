#include "scan/supervisor.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <set>
#include <unordered_map>
#include <utility>

#include "scan/bell.h"
#include "scan/comparison.h"
#include "scan/dispatcher.h"
#include "scan/lanes.h"
#include "scan/open_files.h"
#include "scan/reading.h"
#include "scan/takeover.h"
#include "scan/tally.h"

namespace kolum::scan {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kNap{20};
constexpr milliseconds kBetweenProgress{100};
// Before results, which lanes may wait for, are looked at again.
constexpr milliseconds kTimeForEvents{10};
// For the files at hand when a scan stops early, and for the threads of one that is complete.
constexpr milliseconds kTimeToStop{500};
constexpr milliseconds kTimeToEnd{200};
constexpr std::size_t kSuspectsAtATime = 32;
constexpr std::size_t kChecksAtATime = 64;

constexpr const char* kCodeOfHung = "hung";

std::string secondsText(milliseconds time) {
  return std::to_string(std::chrono::duration_cast<std::chrono::seconds>(time).count()) + " s";
}

bool isPoison(Outcome::Kind kind) {
  return kind == Outcome::Kind::kCrash || kind == Outcome::Kind::kDeadline ||
         kind == Outcome::Kind::kMemory;
}

}  // namespace

class Supervisor::Impl {
 public:
  Impl(Store& store, Prober prober, ScanOptions options, ScanHooks hooks)
      : store_(store),
        options_(std::move(options)),
        hooks_(std::move(hooks)),
        storage_(options_.storage ? options_.storage : std::make_shared<const Storage>()),
        interrupted_(takeOver(store_)),
        openFiles_(std::make_shared<OpenFiles>(store_.file())),
        lanes_([prober = std::move(prober), openFiles = openFiles_](
                   Task&& task) { return carryOut(std::move(task), prober, *openFiles); },
               options_.askDevice ? options_.askDevice : readRoot,
               {options_.processors, options_.jobs}, bell_),
        dispatcher_(store_, lanes_),
        targets_(options_.targets.size()) {}

  ScanSummary run() {
    findsMoves_ = store_.counts().files() > 0;
    for (const Mark& mark : interrupted_) noteInterrupted(mark);
    walkers_.emplace(options_.targets, storage_,
                     Walkers::Options{options_.selection, options_.countsAhead, {}}, bell_);
    while (phase_ != Phase::kDone) {
      if (hooks_.isStopWanted && hooks_.isStopWanted()) return stopEarly();
      const bool isBusy = step();
      dispatcher_.commitIfDue();
      reportProgress(false);
      if (!isBusy) bell_->wait(kNap);
    }
    dispatcher_.commit();
    reportProgress(true);
    return finish(kTimeToEnd, false);
  }

 private:
  enum class Phase { kFiles, kGone, kSuspects, kDone };

  struct TargetState {
    std::optional<Comparison> comparison;
    bool isDuplicate = false;
    bool isComplete = false;  // walked to its end
    std::uint64_t device = 0;
    std::uint64_t kept = 0;
    std::vector<GoneFolder> gone;
  };

  // ---- The loop ----

  // Whether there may be more to do at once.
  bool step() {
    const bool hadResults = takeResults();
    walkers_->rethrow();
    takeHung();
    switch (phase_) {
      case Phase::kFiles: {
        const bool hadEvents = takeEvents();
        if (walkers_->isDone() && isIdle()) beginGone();
        return hadEvents || hadResults;
      }
      case Phase::kGone:
        checkGone();
        if (isIdle() && goneTarget_ == targets_.size()) phase_ = Phase::kSuspects;
        return hadResults;
      case Phase::kSuspects:
        return beginSuspect() || hadResults;
      case Phase::kDone:
        break;
    }
    return false;
  }

  bool isIdle() const { return dispatcher_.isIdle() && lanes_.unfinished() == 0; }

  void report(const std::string& path, const std::string& problem) {
    if (hooks_.problem) hooks_.problem(path, problem);
  }

  void reportProblem(const std::string& path, const std::string& problem) {
    tally_.countProblem();
    report(path, problem);
  }

  void reportProgress(bool isLast) {
    const Clock::time_point now = Clock::now();
    if (!hooks_.progress || (!isLast && now < progressDue_)) return;
    progressDue_ = now + kBetweenProgress;
    ScanProgress progress = tally_.progress();
    progress.phase = phase_ == Phase::kFiles  ? ScanProgress::Phase::kFiles
                     : phase_ == Phase::kGone ? ScanProgress::Phase::kGone
                                              : ScanProgress::Phase::kSuspects;
    const Walkers::Ahead ahead = walkers_->ahead();
    progress.isTotalFinal = ahead.isFinal;
    progress.total = std::max(ahead.files, progress.done);
    if (ahead.isFinal && progress.perSecond > 0)
      progress.left = std::chrono::seconds(static_cast<std::int64_t>(
          static_cast<double>(progress.total - progress.done) / progress.perSecond));
    for (const Lanes::AtHand& file : lanes_.atHand())
      progress.atHand.push_back(
          {file.file.full(), std::chrono::duration_cast<milliseconds>(now - file.since)});
    hooks_.progress(progress);
  }

  void noteInterrupted(const Mark& mark) {
    if (!mark.isAlone) return;
    tally_.countQuarantined();
    report(mark.path.full(),
           "in quarantine until it changes: the scan was killed whenever it was open, even alone");
  }

  // ---- Walking ----

  bool takeEvents() {
    const Clock::time_point until = Clock::now() + kTimeForEvents;
    bool hadAny = false;
    for (std::size_t group = 0; group < walkers_->groups(); ++group) {
      while (Clock::now() < until) {
        if (isFull(group)) break;
        auto event = walkers_->take(group);
        if (!event) break;
        hadAny = true;
        handle(group, std::move(*event));
      }
    }
    return hadAny;
  }

  // Whether a group's files wait for a lane that has enough of them.
  bool isFull(std::size_t group) const {
    const auto lane = laneOfGroup_.find(group);
    return lane != laneOfGroup_.end() && dispatcher_.isFull(lane->second);
  }

  void handle(std::size_t group, WalkEvent&& event) {
    TargetState& target = targets_[event.target];
    const std::string& given = options_.targets[event.target].root;
    switch (event.kind) {
      case WalkEvent::Kind::kBegin:
        begin(target, event);
        break;
      case WalkEvent::Kind::kPiece:
        if (!target.isDuplicate) compare(group, target, event.piece);
        break;
      case WalkEvent::Kind::kNotice:
        reportProblem(target.comparison->root() + event.folder, event.reason);
        break;
      case WalkEvent::Kind::kEnd:
        if (!event.reason.empty()) reportProblem(given, event.reason);
        end(target, event);
        break;
    }
  }

  void begin(TargetState& target, const WalkEvent& event) {
    target.isDuplicate = isWalkedElsewhere(event);
    target.device = event.device;
    target.comparison.emplace(store_, options_.selection, *storage_, options_.targets[event.target],
                              event.root, Comparison::Options{options_.isRetry, findsMoves_});
  }

  // Whether a target lies in another one, so that it would be walked twice.
  bool isWalkedElsewhere(const WalkEvent& event) const {
    for (std::size_t i = 0; i < targets_.size(); ++i) {
      const TargetState& other = targets_[i];
      if (i == event.target || !other.comparison || other.isDuplicate) continue;
      if (!options_.targets[i].isWhole() || !options_.targets[event.target].isWhole()) continue;
      const std::string& root = other.comparison->root();
      if (event.root.starts_with(root) &&
          isReached(options_.selection, std::string_view(event.root).substr(root.size())))
        return true;
    }
    return false;
  }

  void end(TargetState& target, const WalkEvent& event) {
    target.isComplete = event.reason.empty();
    tally_.countLinks(event.links);
    if (!target.comparison || target.isDuplicate) return;
    target.gone = target.comparison->takeGone();
    if (!target.isComplete || !options_.targets[event.target].isWhole()) return;
    dispatcher_.write();
    store_.putRoot({target.comparison->root(), target.device, std::time(nullptr)});
  }

  void compare(std::size_t group, TargetState& target, const Piece& piece) {
    const std::string folder = target.comparison->root() + piece.folder;
    // A folder that has gone since it was listed is found to be gone by the next scan.
    if (piece.error != 0 && piece.error != ENOENT)
      reportProblem(folder, std::strerror(piece.error));
    const std::size_t lane = laneOf(folder);
    laneOfGroup_[group] = lane;
    std::uint64_t unchanged = 0;
    target.comparison->add(piece, {.unchanged = [&](const SeenFile&) { ++unchanged; },
                                   .look = [&](Task&& task) { add(lane, std::move(task)); },
                                   .unreadable =
                                       [&](const SeenFile& file) {
                                         tally_.countSkipped(1);
                                         reportProblem(folder + file.name,
                                                       std::strerror(file.error));
                                       }});
    tally_.countUnchanged(unchanged);
  }

  void add(std::size_t lane, Task&& task) {
    if (lanes_.isHealthy(lane)) return dispatcher_.add(lane, std::move(task));
    tally_.countSkipped(1);
  }

  std::size_t laneOf(const std::string& folder) {
    return lanes_.laneOf(storage_->deviceOf(folder));
  }

  // ---- Results ----

  bool takeResults() {
    std::vector<TaskResult> results = lanes_.takeResults();
    for (TaskResult& result : results) {
      dispatcher_.write();
      if (result.isOutOfMemory) throw std::bad_alloc();
      if (result.task.kind == Task::Kind::kCheck) {
        removeGone(result);
      } else if (result.isMissing) {
        store_.unmark(result.task.job.file);
      } else if (result.movedFrom) {
        move(std::move(result));
      } else {
        keep(result);
      }
    }
    return !results.empty();
  }

  void move(TaskResult&& result) {
    Task& task = result.task;
    const KnownFile& former = task.formerNames[*result.movedFrom];
    const Known known = former.known;
    for (TargetState& target : targets_)
      if (target.comparison && task.job.file.folder.starts_with(target.comparison->root()))
        target.comparison->noteMove(known.identity, task.job.identity);
    const bool isMoved = store_.move(known.id, task.job.file, task.job.identity);
    store_.unmark(task.job.file);
    if (isMoved && known.isCurrent) return tally_.countMoved();
    // It is looked at as any other file.
    task.formerNames.clear();
    if (isMoved) task.origin = Origin::kChanged;
    add(laneOf(task.job.file.folder), std::move(task));
  }

  void keep(const TaskResult& result) {
    const Job& job = result.task.job;
    const Outcome& outcome = result.outcome;
    // What was cancelled looks like a failure of the file.
    if (isCancelled_) {
      store_.unmark(job.file);
      return tally_.countSkipped(result.task.origin == Origin::kSuspect ? 0 : 1);
    }
    tally_.countLook(result);
    if (outcome.kind == Outcome::Kind::kDocument) {
      try {
        store_.putDocument(job.file, job.identity, outcome.document);
        return tally_.countDescribed();
      } catch (const StoreError& error) {
        if (error.kind() != StoreError::Kind::kBadDocument) throw;
        return fail(job, State::kFailed, {"bad-document", error.what()}, false);
      }
    }
    const State state = !isPoison(outcome.kind) ? State::kFailed
                        : job.isAlone           ? State::kQuarantined
                                                : State::kSuspect;
    fail(job, state, outcome.reason, outcome.isTransient);
  }

  void fail(const Job& job, State state, const Reason& reason, bool isTransient) {
    // So that the next scan tries again: no file has this identity.
    const Identity identity = isTransient ? Identity() : job.identity;
    store_.putFailure(job.file, identity, state, reason);
    // Suspects are counted when they have been looked at again.
    if (state == State::kSuspect) return;
    tally_.countFailed(reason.code);
    if (state != State::kQuarantined) return;
    tally_.countQuarantined();
    report(job.file.full(), "in quarantine until it changes: " + reason.text);
  }

  // ---- What hangs ----

  void takeHung() {
    const Clock::time_point now = Clock::now();
    if (now < hungDue_) return;
    hungDue_ = now + kBetweenProgress;
    for (const std::string& mount : walkers_->takeHung(options_.folderLimit)) {
      reportProblem(mount, "does not answer");
      for (std::size_t lane = 0; lane < lanes_.size(); ++lane)
        if (lanes_.mountOf(lane) == mount) lanes_.giveUp(lane);
    }
    for (HungTask& hung : lanes_.takeHung(options_.fileLimit, options_.answerLimit))
      noteHung(std::move(hung));
    for (std::size_t lane = 0; lane < lanes_.size(); ++lane) dropIfUnhealthy(lane);
  }

  void noteHung(HungTask&& hung) {
    if (hung.task.kind != Task::Kind::kLook) return;
    const Job& job = hung.task.job;
    dispatcher_.write();
    if (hung.isDeviceDead) {
      store_.unmark(job.file);
      tally_.countSkipped(hung.task.origin == Origin::kSuspect ? 0 : 1);
      return;
    }
    TaskResult result;
    result.task = std::move(hung.task);
    result.elapsed = options_.fileLimit;
    result.outcome.kind = Outcome::Kind::kDeadline;
    result.outcome.reason = {kCodeOfHung,
                             "reading it did not end within " + secondsText(options_.fileLimit)};
    keep(result);
  }

  void dropIfUnhealthy(std::size_t lane) {
    if (lanes_.isHealthy(lane)) return;
    tally_.countSkipped(dispatcher_.drop(lane));
    if (!unhealthy_.insert(lane).second) return;
    reportProblem(lanes_.mountOf(lane), "the device does not answer; its files are left out");
  }

  // ---- What is gone ----

  void beginGone() {
    phase_ = Phase::kGone;
    goneTarget_ = 0;
    skipTargetsWithoutGone();
  }

  // Only of those that were walked to their end.
  void skipTargetsWithoutGone() {
    while (goneTarget_ < targets_.size() &&
           (targets_[goneTarget_].gone.empty() || !targets_[goneTarget_].isComplete)) {
      reportKept(targets_[goneTarget_]);
      ++goneTarget_;
    }
  }

  // Has the readers check whether files that were not found do not exist.
  void checkGone() {
    while (goneTarget_ < targets_.size() && lanes_.unfinished() < kChecksAtATime) {
      TargetState& target = targets_[goneTarget_];
      // Results of this target's checks need its state: the last ones are waited for.
      if (target.gone.empty()) {
        if (lanes_.unfinished() > 0) return;
        reportKept(target);
        ++goneTarget_;
        skipTargetsWithoutGone();
        continue;
      }
      const GoneFolder folder = std::move(target.gone.back());
      target.gone.pop_back();
      check(target, folder);
    }
  }

  void check(TargetState& target, const GoneFolder& folder) {
    const KnownFolder known = store_.folder(folder.folder);
    if (folder.isTree)
      for (const std::string& name : known.folders)
        target.gone.push_back({folder.folder + name + "/", folder.device, true});
    const std::string inside = folder.folder.substr(target.comparison->root().size());
    Task task;
    task.kind = Task::Kind::kCheck;
    task.job.file.folder = folder.folder;
    task.job.rootLength = target.comparison->root().size();
    for (const Known& file : known.files)
      if (options_.selection.countsFile(inside, file.name)) task.names.push_back(file.name);
    if (task.names.empty()) return;
    task.job.identity.device = folder.device;
    const std::size_t lane = laneOf(folder.folder);
    if (!lanes_.isHealthy(lane)) return;
    std::vector<Task> tasks;
    tasks.push_back(std::move(task));
    lanes_.begin(lane, std::move(tasks));
  }

  void removeGone(const TaskResult& result) {
    const FilePath& place = result.task.job.file;
    TargetState& target = targets_[goneTarget_];
    const GoneFolder folder = {place.folder, result.task.job.identity.device, false};
    for (const std::string& name : result.missing) {
      const auto known = store_.file({place.folder, name});
      if (!known) continue;
      if (target.comparison->mayRemove(folder, *known)) {
        store_.removeFile({place.folder, name});
        tally_.countGone();
      } else {
        ++target.kept;
        tally_.countKept();
      }
    }
  }

  void reportKept(TargetState& target) {
    const std::uint64_t kept = std::exchange(target.kept, 0);
    if (kept == 0) return;
    report(target.comparison->root(),
           std::to_string(kept) +
               " known files were not found, and nothing that is known is there in their place: "
               "kept, because their disk may be missing (\"kolum library forget\" removes them)");
  }

  // ---- Suspects ----

  // One after the other, each with nothing beside it. Whether it is another one's turn at once.
  bool beginSuspect() {
    if (!isIdle()) return false;
    // What was found about the last one decides whether the list has changed.
    if (suspects_.empty() && !fetchSuspects()) {
      phase_ = Phase::kDone;
      return true;
    }
    const KnownFile suspect = std::move(suspects_.back());
    suspects_.pop_back();
    Task task;
    task.origin = Origin::kSuspect;
    task.job.file = suspect.path();
    task.job.identity = suspect.known.identity;
    task.job.isAlone = true;
    const std::optional<std::size_t> root = rootLengthOf(task.job.file);
    if (!root) return true;
    task.job.rootLength = *root;
    add(laneOf(suspect.folder), std::move(task));
    dispatcher_.commit();
    return false;
  }

  // Suspects, after what is in quarantine if that is wanted: so that nothing gets a third try.
  bool fetchSuspects() {
    const State state = isRetryingQuarantine_ ? State::kQuarantined : State::kSuspect;
    suspects_ = store_.filesInState(state, kSuspectsAtATime, lastSuspect_);
    if (!suspects_.empty()) {
      lastSuspect_ = suspects_.back().known.id;
      std::reverse(suspects_.begin(), suspects_.end());
      return true;
    }
    if (!isRetryingQuarantine_) return false;
    isRetryingQuarantine_ = false;
    lastSuspect_ = 0;
    return fetchSuspects();
  }

  // Of the target that leads to a file; empty if none does.
  std::optional<std::size_t> rootLengthOf(const FilePath& file) const {
    const std::string path = file.full();
    for (std::size_t i = 0; i < targets_.size(); ++i) {
      if (!targets_[i].comparison || targets_[i].isDuplicate) continue;
      const std::string& root = targets_[i].comparison->root();
      if (path.starts_with(root + options_.targets[i].first) &&
          isReached(options_.selection, std::string_view(path).substr(root.size())))
        return root.size();
    }
    return std::nullopt;
  }

  // ---- The end ----

  ScanSummary stopEarly() {
    takeResults();
    if (hooks_.cancelProbes) {
      hooks_.cancelProbes();
      isCancelled_ = true;
    }
    walkers_->stop(Clock::now());
    dispatcher_.write();
    dropAll();
    return finish(kTimeToStop, true);
  }

  void dropAll() {
    for (std::size_t lane = 0; lane < lanes_.size(); ++lane) dispatcher_.drop(lane);
  }

  ScanSummary finish(milliseconds time, bool isStopped) {
    const Clock::time_point deadline = Clock::now() + time;
    std::size_t left = lanes_.stop(deadline) ? 0 : lanes_.threads();
    if (isStopped) {
      takeResults();
      dropAll();  // what these results would have brought
      // Whoever wanted to stop did not want to wait; the files are not under suspicion for that.
      for (const Lanes::AtHand& file : lanes_.atHand()) store_.unmark(file.file);
      dispatcher_.commit();
    }
    left += walkers_->stop(Clock::now() + kTimeToEnd) ? 0 : walkers_->threads();
    ScanSummary summary = tally_.summary();
    summary.isStopped = isStopped;
    summary.threadsLeftBehind = left;
    return summary;
  }

  Store& store_;
  const ScanOptions options_;
  const ScanHooks hooks_;
  const std::shared_ptr<const Storage> storage_;
  const std::shared_ptr<Bell> bell_ = std::make_shared<Bell>();
  const std::vector<Mark> interrupted_;
  const std::shared_ptr<OpenFiles> openFiles_;
  Lanes lanes_;
  Dispatcher dispatcher_;
  std::optional<Walkers> walkers_;
  Tally tally_;
  Phase phase_ = Phase::kFiles;

  std::vector<TargetState> targets_;
  std::unordered_map<std::size_t, std::size_t> laneOfGroup_;
  std::set<std::size_t> unhealthy_;  // lanes that were reported
  bool findsMoves_ = true;
  bool isCancelled_ = false;
  std::size_t goneTarget_ = 0;  // whose files are checked

  std::vector<KnownFile> suspects_;  // the next one last
  bool isRetryingQuarantine_ = options_.isRetry;
  std::int64_t lastSuspect_ = 0;

  Clock::time_point progressDue_;
  Clock::time_point hungDue_;
};

Supervisor::Supervisor(Store& store, Prober prober, ScanOptions options, ScanHooks hooks)
    : impl_(
          std::make_unique<Impl>(store, std::move(prober), std::move(options), std::move(hooks))) {}

Supervisor::~Supervisor() = default;

ScanSummary Supervisor::run() {
  return impl_->run();
}

}  // namespace kolum::scan
