#include "scan/watch.h"

#include <poll.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <utility>

#include "scan/notices.h"
#include "scan/root.h"

namespace kolum::scan {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kNap{50};
// Beyond, one walk of everything costs less than many of parts.
constexpr std::size_t kMostFolders = 5000;

// What has changed since the last report: folders, and whether what is below them has, too.
class Dirty {
 public:
  Dirty(const std::vector<std::string>& roots, const Selection& selection)
      : roots_(roots), selection_(selection) {}

  // The folder that has appeared, if it is one that is walked.
  std::optional<std::string> note(const Notice& notice) {
    const auto root = std::find_if(roots_.begin(), roots_.end(), [&](const std::string& candidate) {
      return notice.folder.starts_with(candidate);
    });
    if (root == roots_.end()) return std::nullopt;
    const std::string folder = notice.folder.substr(root->size());
    const bool isOurs = notice.isFolder ? selection_.entersFolder(folder, notice.name)
                                        : selection_.countsFile(folder, notice.name);
    if (!isOurs || !isReached(selection_, folder)) return std::nullopt;
    mark(*root, folder, false);
    if (!notice.isFolder || !notice.hasAppeared) return std::nullopt;
    mark(*root, folder + notice.name + "/", true);
    return notice.folder + notice.name + "/";
  }
  void markEverything() {
    isEverything_ = true;
    touch();
  }

  bool isClean() const { return !isEverything_ && folders_.empty(); }
  bool isDue(milliseconds quiet, milliseconds latest) const {
    const Clock::time_point now = Clock::now();
    return !isClean() && (now - last_ >= quiet || now - first_ >= latest);
  }
  Changes take() {
    Changes changes;
    changes.isEverything = isEverything_ || folders_.size() > kMostFolders;
    if (!changes.isEverything)
      for (const auto& [place, isRecursive] : folders_)
        changes.targets.push_back({place.first, place.second, isRecursive, true});
    folders_.clear();
    isEverything_ = false;
    isMarked_ = false;
    return changes;
  }

 private:
  void mark(const std::string& root, const std::string& folder, bool isRecursive) {
    bool& known = folders_[{root, folder}];
    known = known || isRecursive;
    touch();
  }
  void touch() {
    last_ = Clock::now();
    if (!isMarked_) first_ = last_;
    isMarked_ = true;
  }

  const std::vector<std::string>& roots_;
  const Selection& selection_;
  std::map<std::pair<std::string, std::string>, bool> folders_;
  bool isEverything_ = false;
  bool isMarked_ = false;
  Clock::time_point first_;
  Clock::time_point last_;
};

}  // namespace

struct Watch::State {
  Options options;
  std::shared_ptr<const Storage> storage;
  Pulse pulse;

  mutable std::mutex mutex;
  std::condition_variable changed;
  std::deque<Changes> changes;
  std::string obstacle;
  bool isReady = false;
  bool usesFanotify = false;

  std::unique_ptr<Notices> openNotices(const std::vector<std::string>& roots) {
    if (options.source) return options.source();
    if (options.way == Way::kAny) {
      if (auto notices = fanotifyNotices(roots, *storage)) {
        const std::lock_guard lock(mutex);
        usesFanotify = true;
        return notices;
      }
    }
    return inotifyNotices(options.selection, roots);
  }

  void report(Changes&& news) {
    const std::lock_guard lock(mutex);
    changes.push_back(std::move(news));
    changed.notify_all();
  }
  void noteReady() {
    const std::lock_guard lock(mutex);
    isReady = true;
    changed.notify_all();
  }
  void noteObstacle(const std::string& text) {
    const std::lock_guard lock(mutex);
    obstacle = text;
  }
};

namespace {

std::string networkObstacle(const std::vector<std::string>& roots, const Storage& storage) {
  for (const std::string& root : roots) {
    const Device device = storage.deviceOf(root);
    if (device.medium == Medium::kNetwork)
      return "changes that other machines make on " + device.mount + " are not reported";
  }
  return "";
}

}  // namespace

Watch::Watch(Options options, std::shared_ptr<const Storage> storage)
    : state_(std::make_shared<State>()), walkedAt_(Clock::now()) {
  state_->options = std::move(options);
  state_->storage = std::move(storage);
  crew_.start([state = state_] { run(state); });
}

Watch::~Watch() {
  state_->pulse.isStopWanted = true;
  crew_.waitUntil(Clock::now() + milliseconds(200));
}

void Watch::run(const std::shared_ptr<State>& shared) {
  State& state = *shared;
  const Options& options = state.options;
  std::vector<std::string> roots;
  for (const std::string& given : options.roots) {
    OpenedRoot root = openRoot(given);
    ++state.pulse.beats;
    // The scan reports those that are missing.
    if (root.descriptor) roots.push_back(std::move(root.path));
  }
  const std::unique_ptr<Notices> notices = state.openNotices(roots);
  const std::string network = networkObstacle(roots, *state.storage);
  const auto noteObstacle = [&] {
    const std::string obstacle = notices ? notices->obstacle() : "there can be no more watches";
    state.noteObstacle(obstacle.empty() ? network : obstacle);
  };
  const auto addTrees = [&](const std::vector<std::string>& folders) {
    if (!notices || folders.empty()) return;
    for (const std::string& folder : folders) notices->addTree(folder, state.pulse);
    noteObstacle();
  };

  addTrees(roots);
  noteObstacle();
  state.noteReady();
  Dirty dirty(roots, options.selection);
  while (notices && !state.pulse.isStopWanted) {
    pollfd awaited = {notices->descriptor(), POLLIN, 0};
    poll(&awaited, 1, static_cast<int>(kNap.count()));
    std::vector<std::string> appeared;
    const bool isComplete = notices->read([&](const Notice& notice) {
      if (auto folder = dirty.note(notice)) appeared.push_back(std::move(*folder));
    });
    // If something was lost, folders may have appeared, too.
    addTrees(isComplete ? appeared : roots);
    if (!isComplete) dirty.markEverything();
    if (dirty.isDue(options.quiet, options.latest)) state.report(dirty.take());
  }
}

bool Watch::waitUntilReady(const std::function<bool()>& keepGoing) {
  std::unique_lock lock(state_->mutex);
  std::uint64_t beats = 0;
  Clock::time_point movedAt = Clock::now();
  while (!state_->changed.wait_for(lock, kNap, [&] { return state_->isReady; })) {
    if (!keepGoing()) return false;
    if (std::exchange(beats, state_->pulse.beats) != state_->pulse.beats) movedAt = Clock::now();
    if (Clock::now() - movedAt < state_->options.folderLimit) continue;
    state_->obstacle = "a device does not answer";
    return true;
  }
  return true;
}

std::optional<Changes> Watch::wait(const std::function<bool()>& keepGoing) {
  std::unique_lock lock(state_->mutex);
  while (!state_->changed.wait_for(lock, kNap, [&] { return !state_->changes.empty(); })) {
    if (!keepGoing()) return std::nullopt;
    const bool isOverdue = Clock::now() - walkedAt_ >= state_->options.period;
    if (state_->obstacle.empty() || !isOverdue) continue;
    walkedAt_ = Clock::now();
    return Changes{true, {}};
  }
  Changes changes = std::move(state_->changes.front());
  state_->changes.pop_front();
  if (changes.isEverything) walkedAt_ = Clock::now();
  return changes;
}

std::string Watch::obstacle() const {
  const std::lock_guard lock(state_->mutex);
  return state_->obstacle;
}

bool Watch::usesFanotify() const {
  const std::lock_guard lock(state_->mutex);
  return state_->usesFanotify;
}

}  // namespace kolum::scan
