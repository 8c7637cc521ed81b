// A scan: walks folders, compares what is there with what the library knows, has the rest read, and
// writes what was found.
//
// One thread, the one that calls run(), owns the library; it never touches the folders that are
// scanned. Others walk (scan/walkers.h) and read files (scan/lanes.h). Between them, queues are
// bounded, so that memory does not grow with the number of files, apart from the largest folder.
#ifndef KOLUM_SCAN_SUPERVISOR_H
#define KOLUM_SCAN_SUPERVISOR_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "scan/prober.h"
#include "scan/store.h"
#include "scan/walk.h"
#include "scan/walkers.h"

namespace kolum::scan {

struct ScanOptions {
  std::vector<Target> targets;
  Selection selection;
  std::size_t jobs = 0;        // files read at a time; 0: as the storage suggests
  std::size_t processors = 1;  // of this machine
  bool isRetry = false;        // also looks at unchanged files that failed or are in quarantine
  bool countsAhead = false;    // for the progress, if the walk has to wait for the readers
  // What takes longer hangs: its thread is left behind.
  std::chrono::milliseconds folderLimit{30'000};
  std::chrono::milliseconds fileLimit{180'000};
  // For what a device has to do to show that it answers.
  std::chrono::milliseconds answerLimit{10'000};
  // For tests; null: of this machine, and reading the root's folder.
  std::shared_ptr<const Storage> storage = {};
  std::function<void(const Job&)> askDevice = {};
};

struct ScanProgress {
  enum class Phase { kFiles, kGone, kSuspects };

  Phase phase = Phase::kFiles;
  std::uint64_t done = 0;
  std::uint64_t total = 0;
  bool isTotalFinal = false;
  double perSecond = 0;                      // over the last seconds
  std::optional<std::chrono::seconds> left;  // empty if unknown
  std::uint64_t failed = 0;
  std::uint64_t bytesRead = 0;
  std::chrono::milliseconds elapsed{0};
  struct AtHand {
    std::string path;
    std::chrono::milliseconds since;
  };
  std::vector<AtHand> atHand;
};

struct ScanSummary {
  std::uint64_t added = 0;
  std::uint64_t changed = 0;
  std::uint64_t unchanged = 0;
  std::uint64_t retried = 0;  // unchanged, but looked at again
  std::uint64_t moved = 0;
  std::uint64_t gone = 0;
  std::uint64_t kept = 0;         // not found, but their disk seems to be missing
  std::uint64_t skipped = 0;      // not looked at: they or their device cannot be read
  std::uint64_t described = 0;    // files with a new document
  std::uint64_t failed = 0;       // without
  std::uint64_t quarantined = 0;  // of those that failed
  std::uint64_t problems = 0;     // folders and devices that could not be read
  std::uint64_t links = 0;        // not followed
  std::uint64_t bytesRead = 0;
  std::map<std::string, std::uint64_t> failedByReason;  // by the code of the reason
  std::chrono::milliseconds elapsed{0};
  bool isStopped = false;
  std::size_t threadsLeftBehind = 0;  // the process should end by _exit()
  struct SlowFile {
    std::string path;
    std::chrono::milliseconds elapsed;
  };
  std::vector<SlowFile> slowest;  // slowest first

  std::uint64_t files() const { return added + changed + unchanged + retried + moved + skipped; }
};

// Called by the thread of run(). Any may be null.
struct ScanHooks {
  std::function<bool()> isStopWanted;  // asked about every 20 ms
  // Once, when the scan stops early: whatever the prober waits for should end.
  std::function<void()> cancelProbes;
  std::function<void(const ScanProgress&)> progress;  // about ten times a second
  std::function<void(const std::string& path, const std::string& problem)> problem;
};

class Supervisor {
 public:
  // STORE is open for writing; it and the hooks must outlive this.
  Supervisor(Store& store, Prober prober, ScanOptions options, ScanHooks hooks);
  ~Supervisor();
  Supervisor(const Supervisor&) = delete;
  Supervisor& operator=(const Supervisor&) = delete;

  // Once. Returns within a second of a wish to stop. Throws StoreError; everything that was found
  // until a second before is in the library then.
  ScanSummary run();

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace kolum::scan

#endif
