// Compares what a walk finds beneath a root with what the library knows.
#ifndef KOLUM_SCAN_COMPARISON_H
#define KOLUM_SCAN_COMPARISON_H

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "scan/lanes.h"
#include "scan/storage.h"
#include "scan/store.h"
#include "scan/walk.h"
#include "scan/walkers.h"

namespace kolum::scan {

// A folder in which known files were not found.
struct GoneFolder {
  std::string folder;        // absolute
  std::uint64_t device = 0;  // that was walked there, or in the folder above
  bool isTree = false;       // the folder itself is gone, with all below it
};

class Comparison {
 public:
  // What is done with the files of a piece; each file goes to one of these.
  struct Visitor {
    std::function<void(const SeenFile&)> unchanged;
    std::function<void(Task&&)> look;
    std::function<void(const SeenFile&)> unreadable;  // stat failed
  };

  struct Options {
    bool isRetry = false;
    bool findsMoves = true;  // pointless while nothing is known
  };

  // ROOT is absolute, without links, with a trailing "/". All must outlive this.
  Comparison(Store& store, const Selection& selection, const Storage& storage, const Target& target,
             std::string root, Options options);

  void add(const Piece& piece, const Visitor& visitor);
  // Another name of a known file turned out to be gone: that file is here now.
  void noteMove(const Identity& before, const Identity& now);

  const std::string& root() const { return root_; }
  std::vector<GoneFolder> takeGone() { return std::exchange(gone_, {}); }

  // Whether a known file that does not exist any more is gone, and not only its disk. It may be
  // removed
  //  - on the device that it was on, if the root lies within that file system (other files were
  //    found there), or was watched, or if known files were found on it, by their inodes;
  //  - on another device, if known files have come from its device to that one, by their inodes,
  //    sizes and times: a device may get another number.
  bool mayRemove(const GoneFolder& folder, const Known& known) const;

 private:
  void compare(const SeenFile& file, const Visitor& visitor);
  void finishFolder(const Piece& piece);
  Task taskFor(const SeenFile& file, Origin origin);
  void noteEvidence(const Known& known, const Identity& seen);
  bool isWithinMount(const std::string& folder) const;

  Store& store_;
  const Selection& selection_;
  const Storage& storage_;
  const Target& target_;
  std::string root_;
  Options options_;

  // Of the folder whose pieces come.
  bool isInFolder_ = false;
  std::string folder_;
  KnownFolder known_;
  std::vector<bool> isSeen_;

  std::set<std::uint64_t> devicesWithFiles_;
  std::set<std::uint64_t> recognizedDevices_;
  std::set<std::pair<std::uint64_t, std::uint64_t>> renumbered_;
  std::vector<GoneFolder> gone_;
};

}  // namespace kolum::scan

#endif
