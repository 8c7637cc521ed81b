#include "media/budget.h"

#include <ctime>

namespace kolum::media {

namespace {

std::chrono::nanoseconds processorTime() {
  std::timespec now = {};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

}  // namespace

bool Meter::isUsedUp() const noexcept {
  if (isUsedUp_) return true;
  const auto wallTime = Clock::now() - begin_;
  isUsedUp_ =
      bytes_ >= budget::kBytes || wallTime >= budget::kWallTime || isProcessorTimeUsedUp(wallTime);
  return isUsedUp_;
}

// Asking for the processor time takes a system call, so nothing is measured in the first second,
// in which nearly every call ends.
bool Meter::isProcessorTimeUsedUp(Clock::duration wallTime) const noexcept {
  constexpr std::chrono::seconds kUnmeasured{1};
  if (wallTime < kUnmeasured) return false;
  if (!processorTimeBefore_) processorTimeBefore_ = processorTime() - kUnmeasured;
  return processorTime() - *processorTimeBefore_ >= budget::kProcessorTime;
}

}  // namespace kolum::media
