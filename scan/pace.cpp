#include "scan/pace.h"

#include <algorithm>

namespace kolum::scan {

namespace {

// What a file may take on a middling disk; only the proportion of small and large files counts.
constexpr double kSecondsPerFile = 0.005;
constexpr double kBytesPerSecond = 100e6;

constexpr double kNewWeight = 1.0 / 8;  // of a file in the mean of the last ones
constexpr double kForgetting = 1.002;  // per file, so that one lucky moment is no standard for ever
constexpr double kSlow = 4;            // times what the device has shown
constexpr double kFastAgain = 2;
constexpr double kNoticeable = 0.05;  // seconds per file; below, nobody is in anyone's way
constexpr int kFilesPerChange = 8;
constexpr double kLongestPause = 1;  // seconds

double mean(double before, double now) {
  return before == 0 ? now : before + (now - before) * kNewWeight;
}

}  // namespace

void Pace::finished(Duration waiting, std::uint64_t bytesRead) {
  const double seconds = std::max(std::chrono::duration<double>(waiting).count(), 0.0);
  const double cost =
      seconds / (kSecondsPerFile + static_cast<double>(bytesRead) / kBytesPerSecond);
  recent_ = mean(recent_, cost);
  recentSeconds_ = mean(recentSeconds_, seconds);
  best_ = best_ == 0 ? recent_ : std::min(best_ * kForgetting, recent_);
  if (++sinceChange_ < kFilesPerChange) return;
  if (recent_ > best_ * kSlow && recentSeconds_ > kNoticeable) {
    slowDown(recentSeconds_);
  } else if (recent_ < best_ * kFastAgain || recentSeconds_ < kNoticeable) {
    speedUp();
  }
}

void Pace::slowDown(double seconds) {
  sinceChange_ = 0;
  if (jobs_ > 1) {
    jobs_ /= 2;
    return;
  }
  pause_ = std::chrono::duration_cast<Duration>(
      std::chrono::duration<double>(std::min(seconds, kLongestPause)));
}

void Pace::speedUp() {
  if (!isSlow()) return;
  sinceChange_ = 0;
  if (pause_ > Duration::zero()) {
    pause_ = Duration::zero();
  } else {
    ++jobs_;
  }
}

}  // namespace kolum::scan
