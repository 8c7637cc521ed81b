// Threads that may hang in the kernel for ever: on a disk or server that does not answer, no call
// returns and no thread ends.
#ifndef KOLUM_SCAN_CREW_H
#define KOLUM_SCAN_CREW_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>

namespace kolum::scan {

// Threads are not joined but waited for, as long as one likes. A thread must own what it uses; one
// that is left behind may go on at any time. Signals do not come to these threads.
class Crew {
 public:
  // Throws std::system_error if there can be no further thread.
  void start(std::function<void()> work);
  // Whether all threads have ended at that time.
  bool waitUntil(std::chrono::steady_clock::time_point deadline);
  std::size_t size() const;
  // Throws what ended a thread, if anything has.
  void rethrow() const;

 private:
  struct State {
    mutable std::mutex mutex;
    std::condition_variable ended;
    std::size_t count = 0;
    std::exception_ptr error;  // the last one
  };

  std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace kolum::scan

#endif
