#include "scan/walkers.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <set>
#include <utility>

#include "scan/root.h"

namespace kolum::scan {

namespace {

using Clock = Walkers::Clock;

// Of a group. Folders may be small or large.
constexpr std::size_t kMostEvents = 256;
constexpr std::size_t kMostFiles = 8192;
// If the readers keep the walk waiting for that long, counting all files gives a total sooner.
constexpr std::chrono::milliseconds kLongWait{500};

constexpr const char* kNoAnswer = "the device does not answer";

WalkEvent endOf(std::size_t target, std::string reason, std::uint64_t links) {
  WalkEvent event;
  event.kind = WalkEvent::Kind::kEnd;
  event.target = target;
  event.reason = std::move(reason);
  event.links = links;
  return event;
}

}  // namespace

struct Walkers::Group {
  struct Numbered {
    std::size_t number;
    Target target;
  };

  // What never changes while threads run.
  Options options;
  std::shared_ptr<const Storage> storage;
  std::shared_ptr<Bell> bell;
  std::vector<Numbered> targets;

  std::mutex mutex;
  std::condition_variable roomCame;
  std::deque<WalkEvent> events;
  std::size_t filesInEvents = 0;
  bool isDone = false;
  bool isStopped = false;
  // Threads of an earlier generation were left behind and must touch nothing.
  std::uint64_t generation = 0;
  std::shared_ptr<Pulse> pulse = std::make_shared<Pulse>();
  std::uint64_t lastBeats = 0;
  Clock::time_point movedAt = Clock::now();
  bool isWaiting = false;  // for room

  std::size_t at = 0;                     // the present target
  std::optional<PendingFolders> pending;  // while its root is open
  OpenedRoot root;
  std::string folder;  // that is read now
  std::uint64_t links = 0;
  std::set<std::string> deadDevices;

  std::uint64_t seenFiles = 0;
  bool wantsCount = false;
  bool isCounting = false;
  std::atomic<std::uint64_t> countedFiles{0};
  std::atomic<bool> isCounted{false};
  std::shared_ptr<Pulse> countingPulse = std::make_shared<Pulse>();

  bool isCurrent(std::uint64_t mine) const { return mine == generation && !isStopped; }

  // Waits for room. False if the thread has to end.
  bool push(std::unique_lock<std::mutex>& lock, std::uint64_t mine, WalkEvent&& event) {
    const auto hasRoom = [&] {
      return !isCurrent(mine) || (events.size() < kMostEvents && filesInEvents < kMostFiles);
    };
    isWaiting = true;
    if (!roomCame.wait_for(lock, kLongWait, hasRoom)) {
      wantsCount = options.countsAhead;
      roomCame.wait(lock, hasRoom);
    }
    if (!isCurrent(mine)) return false;
    isWaiting = false;
    movedAt = Clock::now();
    seenFiles += event.piece.files.size();
    filesInEvents += event.piece.files.size();
    events.push_back(std::move(event));
    if (events.size() == 1) bell->ring();
    return true;
  }

  bool isDead(const std::string& path) const {
    return !deadDevices.empty() && deadDevices.contains(storage->deviceOf(path).id);
  }

  // The next target, or the rest of the present one, cannot be walked. For events that nobody waits
  // for room for.
  void endTarget(const std::string& reason) {
    events.push_back(endOf(targets[at].number, reason, links));
    pending.reset();
    root = {};
    ++at;
  }

  ReadOptions readingOf(const std::string& path) const {
    ReadOptions reading = options.reading;
    reading.isByInode = storage->deviceOf(path).medium == Medium::kRotating;
    return reading;
  }
};

Walkers::Walkers(std::vector<Target> targets, const std::shared_ptr<const Storage>& storage,
                 const Options& options, const std::shared_ptr<Bell>& bell) {
  std::vector<std::string> devices;
  for (std::size_t i = 0; i < targets.size(); ++i) {
    const std::string device = storage->deviceOf(absolutePath(targets[i].root)).id;
    const auto found = std::find(devices.begin(), devices.end(), device);
    const auto number = static_cast<std::size_t>(found - devices.begin());
    if (found == devices.end()) {
      devices.push_back(device);
      groups_.push_back(std::make_shared<Group>());
      groups_.back()->options = options;
      groups_.back()->storage = storage;
      groups_.back()->bell = bell;
    }
    groups_[number]->targets.push_back({i, std::move(targets[i])});
  }
  for (const auto& group : groups_) crew_.start([group] { walk(group); });
}

Walkers::~Walkers() {
  stop(Clock::now());
}

void Walkers::walk(const std::shared_ptr<Group>& shared) {
  Group& group = *shared;
  std::unique_lock lock(group.mutex);
  const std::uint64_t mine = group.generation;
  const std::shared_ptr<Pulse> pulse = group.pulse;
  std::optional<FolderReader> reader;
  const auto push = [&](WalkEvent&& event) { return group.push(lock, mine, std::move(event)); };

  // Opens the next target's root. False if the thread has to end.
  const auto begin = [&] {
    const Group::Numbered target = group.targets[group.at];
    reader.reset();
    group.links = 0;
    OpenedRoot root;
    if (group.isDead(absolutePath(target.target.root))) {
      root.reason = kNoAnswer;
    } else {
      lock.unlock();
      root = openRoot(target.target.root);
      lock.lock();
    }
    if (!group.isCurrent(mine)) return false;
    if (!root.descriptor) {
      ++group.at;
      return push(endOf(target.number, root.reason, 0));
    }
    group.root = root;
    group.pending.emplace(target.target.first, target.target.isRecursive);
    WalkEvent event;
    event.kind = WalkEvent::Kind::kBegin;
    event.target = target.number;
    event.root = root.path;
    event.device = root.device;
    return push(std::move(event));
  };

  const auto notice = [&](const std::string& folder, const char* reason) {
    WalkEvent event;
    event.kind = WalkEvent::Kind::kNotice;
    event.target = group.targets[group.at].number;
    event.folder = folder;
    event.reason = reason;
    return push(std::move(event));
  };

  // Reads one folder. False if the thread has to end.
  const auto read = [&](const std::string& folder) {
    if (!reader)
      reader.emplace(group.root.descriptor, pulse, group.options.selection,
                     group.readingOf(group.root.path));
    const std::size_t target = group.targets[group.at].number;
    group.folder = folder;
    group.movedAt = Clock::now();
    lock.unlock();
    auto end = reader->read(folder, [&](Piece&& piece) {
      WalkEvent event;
      event.target = target;
      event.piece = std::move(piece);
      lock.lock();
      const bool isWanted = push(std::move(event));
      lock.unlock();
      return isWanted;
    });
    lock.lock();
    if (!group.isCurrent(mine)) return false;
    if (!end) return true;
    group.links += end->links;
    return group.pending->enter(std::move(*end)) ||
           notice(folder, "not entered: it contains itself, or its paths are too long");
  };

  while (group.isCurrent(mine)) {
    if (!group.pending) {
      if (group.at == group.targets.size()) {
        group.isDone = true;
        group.bell->ring();
        return;
      }
      if (!begin()) return;
      continue;
    }
    const auto folder = group.pending->next();
    if (!folder) {
      const std::size_t number = group.targets[group.at].number;
      group.pending.reset();
      ++group.at;
      if (!push(endOf(number, "", group.links))) return;
    } else if (group.isDead(group.root.path + *folder)) {
      if (!notice(*folder, kNoAnswer)) return;
    } else if (!read(*folder)) {
      return;
    }
  }
}

// Counts what the walk will come to, without looking at any file.
void Walkers::count(const std::shared_ptr<Group>& shared) {
  Group& group = *shared;
  for (const Group::Numbered& target : group.targets) {
    const OpenedRoot root = openRoot(target.target.root);
    if (!root.descriptor) continue;
    ReadOptions reading = group.options.reading;
    reading.isNamesOnly = true;
    FolderReader reader(root.descriptor, group.countingPulse, group.options.selection, reading);
    PendingFolders pending(target.target.first, target.target.isRecursive);
    while (const auto folder = pending.next()) {
      if (group.countingPulse->isStopWanted) return;
      auto end = reader.read(*folder, [&](Piece&& piece) {
        group.countedFiles += piece.files.size();
        return true;
      });
      if (end) pending.enter(std::move(*end));
    }
  }
  group.isCounted = true;
}

std::optional<WalkEvent> Walkers::take(std::size_t number) {
  Group& group = *groups_[number];
  const std::lock_guard lock(group.mutex);
  if (group.wantsCount && !group.isCounting) {
    group.isCounting = true;
    crew_.start([shared = groups_[number]] { count(shared); });
  }
  if (group.events.empty()) return std::nullopt;
  WalkEvent event = std::move(group.events.front());
  group.events.pop_front();
  group.filesInEvents -= event.piece.files.size();
  group.roomCame.notify_all();
  return event;
}

bool Walkers::isDone() const {
  return std::all_of(groups_.begin(), groups_.end(), [](const std::shared_ptr<Group>& group) {
    const std::lock_guard lock(group->mutex);
    return group->isDone && group->events.empty();
  });
}

std::vector<std::string> Walkers::takeHung(Clock::duration limit) {
  std::vector<std::string> mounts;
  for (const std::shared_ptr<Group>& shared : groups_) {
    Group& group = *shared;
    const std::lock_guard lock(group.mutex);
    const std::uint64_t beats = group.pulse->beats;
    if (group.isDone || group.isWaiting || beats != group.lastBeats) {
      group.lastBeats = beats;
      group.movedAt = Clock::now();
      continue;
    }
    if (Clock::now() - group.movedAt < limit) continue;
    // Its thread is left behind; another one goes on with what is on other devices.
    group.pulse->isStopWanted = true;
    group.pulse = std::make_shared<Pulse>();
    group.lastBeats = 0;
    group.movedAt = Clock::now();
    ++group.generation;
    const std::string rootPath =
        group.pending ? group.root.path : absolutePath(group.targets[group.at].target.root);
    const Device device =
        group.storage->deviceOf(group.pending ? rootPath + group.folder : rootPath);
    group.deadDevices.insert(device.id);
    mounts.push_back(device.mount);
    if (!group.pending || group.isDead(rootPath)) {
      group.endTarget(kNoAnswer);
    } else {
      WalkEvent event;
      event.target = group.targets[group.at].number;
      event.piece.folder = group.folder;
      event.piece.isLast = true;
      event.piece.error = ETIMEDOUT;
      group.events.push_back(std::move(event));
    }
    crew_.start([shared] { walk(shared); });
  }
  return mounts;
}

Walkers::Ahead Walkers::ahead() const {
  Ahead ahead = {0, true};
  for (const std::shared_ptr<Group>& group : groups_) {
    const std::lock_guard lock(group->mutex);
    ahead.files += group->isDone ? group->seenFiles
                                 : std::max<std::uint64_t>(group->seenFiles, group->countedFiles);
    ahead.isFinal = ahead.isFinal && (group->isDone || group->isCounted);
  }
  return ahead;
}

bool Walkers::stop(Clock::time_point deadline) {
  for (const std::shared_ptr<Group>& group : groups_) {
    const std::lock_guard lock(group->mutex);
    group->isStopped = true;
    group->pulse->isStopWanted = true;
    group->countingPulse->isStopWanted = true;
    group->roomCame.notify_all();
  }
  return crew_.waitUntil(deadline);
}

}  // namespace kolum::scan
