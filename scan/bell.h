// Wakes the thread that waits for news from many others.
#ifndef KOLUM_SCAN_BELL_H
#define KOLUM_SCAN_BELL_H

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace kolum::scan {

class Bell {
 public:
  void ring() {
    const std::lock_guard lock(mutex_);
    hasRung_ = true;
    rung_.notify_one();
  }
  // Until it rings, or has rung since the last wait.
  void wait(std::chrono::steady_clock::duration longest) {
    std::unique_lock lock(mutex_);
    rung_.wait_for(lock, longest, [&] { return hasRung_; });
    hasRung_ = false;
  }

 private:
  std::mutex mutex_;
  std::condition_variable rung_;
  bool hasRung_ = false;
};

}  // namespace kolum::scan

#endif
