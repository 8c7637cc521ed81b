// Says which folders beneath roots have changed.
//
// By fanotify for whole file systems where that is allowed (for root, and if the file system can),
// else by inotify for each folder. What neither reports (changes that other machines make on a
// server; folders beyond the limit of watches) is found by walking everything from time to time.
#ifndef KOLUM_SCAN_WATCH_H
#define KOLUM_SCAN_WATCH_H

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "scan/crew.h"
#include "scan/storage.h"
#include "scan/walk.h"
#include "scan/walkers.h"

namespace kolum::scan {

class Notices;

struct Changes {
  bool isEverything = false;    // or much: the roots are to be walked as a whole
  std::vector<Target> targets;  // otherwise
};

class Watch {
 public:
  enum class Way { kAny, kInotify };

  struct Options {
    std::vector<std::string> roots;
    Selection selection;
    // Changes are reported when nothing has happened for that long, so that a file that is being
    // copied is read once; but at the latest after that long.
    std::chrono::milliseconds quiet{1000};
    std::chrono::milliseconds latest{10'000};
    // Between walks of everything, where changes may remain unnoticed.
    std::chrono::milliseconds period{900'000};
    // What takes longer hangs; its changes are not noticed then.
    std::chrono::milliseconds folderLimit{30'000};
    Way way = Way::kAny;
    // For tests; null: the kernel's.
    std::function<std::unique_ptr<Notices>()> source = {};
  };

  Watch(Options options, std::shared_ptr<const Storage> storage);
  // Its thread, if it hangs, is left behind.
  ~Watch();
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

  // Waits until everything that happens from then on is noticed, or it is known that it will not
  // be. False if KEEPGOING, which is asked about every 50 ms, returned false.
  bool waitUntilReady(const std::function<bool()>& keepGoing);
  // The next changes; empty if KEEPGOING returned false.
  std::optional<Changes> wait(const std::function<bool()>& keepGoing);

  // Why changes may remain unnoticed, in words; empty if they do not. Known once it is ready, but
  // may change.
  std::string obstacle() const;
  bool usesFanotify() const;

 private:
  struct State;
  static void run(const std::shared_ptr<State>& state);

  std::shared_ptr<State> state_;
  Crew crew_;
  std::chrono::steady_clock::time_point walkedAt_;  // everything
};

}  // namespace kolum::scan

#endif
