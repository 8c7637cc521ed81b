// Brings tasks to the lanes and keeps the promise about poison: before a file is opened, a mark of
// it is on the disk. Results and the marks of the next files are committed together.
#ifndef KOLUM_SCAN_DISPATCHER_H
#define KOLUM_SCAN_DISPATCHER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "scan/lanes.h"
#include "scan/store.h"

namespace kolum::scan {

class Dispatcher {
 public:
  using Clock = std::chrono::steady_clock;

  Dispatcher(Store& store, Lanes& lanes) : store_(store), lanes_(lanes) {}

  // Begins after the next commit.
  void add(std::size_t lane, Task&& task);
  // How many of a lane's tasks have not been handed to its threads.
  std::size_t waiting(std::size_t lane) const;
  // Whether it has enough tasks for now.
  bool isFull(std::size_t lane) const { return waiting(lane) >= kMostWaiting; }
  bool isIdle() const;

  // Call before anything is written to the library.
  void write();
  // Commits if a lane runs out of tasks, or if something has waited for nearly a second.
  void commitIfDue();
  // Commits what was written, and begins tasks.
  void commit();

  // Drops the tasks of a lane, and takes their marks away.
  std::uint64_t drop(std::size_t lane);

 private:
  // A commit at least every second, even if it takes a while itself.
  static constexpr std::chrono::milliseconds kLongestWait{600};
  static constexpr std::size_t kMostWaiting = 4096;

  struct Queue {
    std::deque<Task> tasks;
    std::size_t batch = 32;  // tasks that its threads should have in store
    std::uint64_t finishedBefore = 0;
    Clock::time_point before = Clock::now();
  };

  Queue& queue(std::size_t lane);
  bool isHungry(std::size_t lane) const;
  std::vector<Task> nextTasks(std::size_t lane);
  void adaptBatch(std::size_t lane);

  Store& store_;
  Lanes& lanes_;
  std::vector<Queue> queues_;
  Clock::time_point writtenSince_;
};

}  // namespace kolum::scan

#endif
