// The threads that walk: one for each device that roots are on, so that none waits for another.
#ifndef KOLUM_SCAN_WALKERS_H
#define KOLUM_SCAN_WALKERS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "scan/bell.h"
#include "scan/crew.h"
#include "scan/storage.h"
#include "scan/walk.h"

namespace kolum::scan {

// What is to be walked: a root, or only part of what is in it.
struct Target {
  std::string root;         // a folder's path, absolute or relative
  std::string first = {};   // the folder below it to begin with: "" or "a/b/"
  bool isRecursive = true;  // with the folders below that
  bool isWatched = false;   // it has been watched since it was walked as a whole

  bool isWhole() const { return first.empty() && isRecursive; }
};

// What a walker reports, in the order in which it happened.
struct WalkEvent {
  enum class Kind {
    kBegin,   // the root was opened
    kPiece,   // entries of a folder
    kNotice,  // a folder that is not entered: FOLDER, REASON
    kEnd,     // of the target; REASON is not empty if it could not be walked to its end
  };

  Kind kind = Kind::kPiece;
  std::size_t target = 0;
  std::string root;  // kBegin: absolute, without links, with a trailing "/"
  std::uint64_t device = 0;
  std::string folder;  // kNotice: relative to the root
  std::string reason;
  Piece piece;
  std::uint64_t links = 0;  // kEnd: symbolic links that would count if they were followed
};

class Walkers {
 public:
  using Clock = std::chrono::steady_clock;

  struct Options {
    Selection selection;
    bool countsAhead = false;  // counts files in advance if the walk has to wait for the readers
    ReadOptions reading = {};  // isByInode is decided by the device
  };

  // Begins at once. BELL rings for the first of several events.
  Walkers(std::vector<Target> targets, const std::shared_ptr<const Storage>& storage,
          const Options& options, const std::shared_ptr<Bell>& bell);
  // Threads that do not end by themselves are left behind.
  ~Walkers();
  Walkers(const Walkers&) = delete;
  Walkers& operator=(const Walkers&) = delete;

  // Targets on one device are walked by one thread, in their order.
  std::size_t groups() const { return groups_.size(); }
  // The next event of a group; empty if there is none now. Walkers wait while events pile up.
  std::optional<WalkEvent> take(std::size_t group);
  // Whether all events of all groups have been taken and no more will come.
  bool isDone() const;

  // For groups that have not moved for that long: their thread is left behind, and what remains of
  // their targets ends with a reason. Returns the devices' mounts.
  std::vector<std::string> takeHung(Clock::duration limit);

  // How many files the targets hold, as far as that is known.
  struct Ahead {
    std::uint64_t files = 0;
    bool isFinal = false;
  };
  Ahead ahead() const;

  // Whether all threads have ended by then. Walkers whose events nobody takes any more end, too.
  bool stop(Clock::time_point deadline);
  // Throws what ended a walk, such as a lack of memory.
  void rethrow() const { crew_.rethrow(); }
  // Those that have not ended.
  std::size_t threads() const { return crew_.size(); }

 private:
  struct Group;
  static void walk(const std::shared_ptr<Group>& group);
  static void count(const std::shared_ptr<Group>& group);

  std::vector<std::shared_ptr<Group>> groups_;
  Crew crew_;
};

}  // namespace kolum::scan

#endif
