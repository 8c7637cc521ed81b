// The threads that read files: a lane for each device, with as many threads as it may have.
#ifndef KOLUM_SCAN_LANES_H
#define KOLUM_SCAN_LANES_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "scan/bell.h"
#include "scan/crew.h"
#include "scan/prober.h"
#include "scan/storage.h"

namespace kolum::scan {

// How a file came to be read.
enum class Origin { kNew, kChanged, kRetried, kSuspect };

// What one thread does at a time.
struct Task {
  enum class Kind {
    kLook,   // at the file
    kCheck,  // which of the files in a folder (the job's) still exist
  };

  Kind kind = Kind::kLook;
  Job job;
  Origin origin = Origin::kNew;
  // Known files that this may be under a new name; if one does not exist any more, it is.
  std::vector<KnownFile> formerNames;
  std::vector<std::string> names;  // to check
};

struct TaskResult {
  Task task;
  Outcome outcome;
  std::optional<std::size_t> movedFrom;  // position in the former names
  std::vector<std::string> missing;      // of the names to check
  bool isMissing = false;                // the file to look at
  bool isOutOfMemory = false;            // this process is, which is not the file's fault
  std::chrono::steady_clock::duration elapsed{0};
  std::chrono::steady_clock::duration waiting{0};  // without the processor, of ELAPSED
};

// A task that has taken too long. Its thread was left behind.
struct HungTask {
  Task task;
  bool isDeviceDead = false;  // it is not the file's fault
};

class Lanes {
 public:
  using Clock = std::chrono::steady_clock;
  // Runs in many threads at once, and must own what it uses; must not throw.
  using Work = std::function<TaskResult(Task&&)>;

  // Does something that the device of a job has to answer, and returns then. May hang.
  using Question = std::function<void(const Job&)>;

  struct Limits {
    std::size_t processors = 1;
    std::size_t jobs = 0;  // of all lanes together, and of each; 0: as the storage suggests
  };

  struct AtHand {
    FilePath file;
    Clock::time_point since;
  };

  // BELL rings when there are many results, or some and a lane that runs out of tasks.
  Lanes(Work work, Question question, Limits limits, std::shared_ptr<Bell> bell);
  // Threads that do not end by themselves are left behind.
  ~Lanes();
  Lanes(const Lanes&) = delete;
  Lanes& operator=(const Lanes&) = delete;

  // The lane of a device, made at its first use.
  std::size_t laneOf(const Device& device);
  std::size_t size() const;

  // Only tasks of healthy lanes are begun.
  void begin(std::size_t lane, std::vector<Task>&& tasks);
  // How many tasks the lane has not begun.
  std::size_t waiting(std::size_t lane) const;
  // How many all lanes have not finished, with the results that nobody has taken yet.
  std::size_t unfinished() const;
  // How many have been finished, since the beginning.
  std::uint64_t finished(std::size_t lane) const;

  std::vector<TaskResult> takeResults();

  // Takes away what has run longer than LIMIT, once it is known whether the file or its device is
  // to blame: a device that does not answer a question within ANSWERLIMIT is unhealthy from then
  // on.
  std::vector<HungTask> takeHung(Clock::duration limit, Clock::duration answerLimit);
  bool isHealthy(std::size_t lane) const;
  void giveUp(std::size_t lane);
  std::string mountOf(std::size_t lane) const;

  // Takes back what was not begun.
  std::vector<Task> takeBack(std::size_t lane);
  std::vector<AtHand> atHand() const;
  // No further task begins. Whether all threads have ended by then.
  bool stop(Clock::time_point deadline);
  // Those that have not ended.
  std::size_t threads() const;

 private:
  struct Lane;
  struct State;
  static void runThread(const std::shared_ptr<State>& state, std::size_t lane);
  void startThreads(std::size_t lane);
  void ask(std::size_t lane);

  std::shared_ptr<State> state_;
  Limits limits_;
};

}  // namespace kolum::scan

#endif
