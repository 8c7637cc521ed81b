// Counts what a scan does, for its progress and its summary.
#ifndef KOLUM_SCAN_TALLY_H
#define KOLUM_SCAN_TALLY_H

#include <chrono>
#include <cstdint>
#include <deque>
#include <string>
#include <utility>

#include "scan/lanes.h"
#include "scan/supervisor.h"

namespace kolum::scan {

class Tally {
 public:
  using Clock = std::chrono::steady_clock;

  void countUnchanged(std::uint64_t files = 1) { summary_.unchanged += files; }
  void countMoved() { ++summary_.moved; }
  void countSkipped(std::uint64_t files) { summary_.skipped += files; }
  void countGone() { ++summary_.gone; }
  void countKept() { ++summary_.kept; }
  void countProblem() { ++summary_.problems; }
  void countLinks(std::uint64_t links) { summary_.links += links; }
  // A look at a file ended. Suspects of this scan were counted before.
  void countLook(const TaskResult& result);
  void countDescribed() { ++summary_.described; }
  void countFailed(const std::string& code);
  void countQuarantined() { ++summary_.quarantined; }

  std::uint64_t done() const;
  // Without what others know: the phase, the total, and what is at hand.
  ScanProgress progress();
  // Complete but for what the end of the threads brings.
  ScanSummary summary() const;

 private:
  void noteTime(const TaskResult& result);

  Clock::time_point begin_ = Clock::now();
  ScanSummary summary_;
  std::deque<std::pair<Clock::time_point, std::uint64_t>> samples_;  // of the last seconds
};

}  // namespace kolum::scan

#endif
