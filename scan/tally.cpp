#include "scan/tally.h"

#include <algorithm>

namespace kolum::scan {

namespace {

constexpr std::size_t kSlowFiles = 5;
constexpr std::chrono::milliseconds kBetweenSamples{500};
constexpr std::size_t kSamples = 20;

std::chrono::milliseconds milliseconds(std::chrono::steady_clock::duration time) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(time);
}

}  // namespace

void Tally::countLook(const TaskResult& result) {
  summary_.bytesRead += result.outcome.bytesRead;
  noteTime(result);
  switch (result.task.origin) {
    case Origin::kNew:
      ++summary_.added;
      break;
    case Origin::kChanged:
      ++summary_.changed;
      break;
    case Origin::kRetried:
      ++summary_.retried;
      break;
    case Origin::kSuspect:
      break;
  }
}

void Tally::noteTime(const TaskResult& result) {
  auto& slowest = summary_.slowest;
  const auto at = std::find_if(slowest.begin(), slowest.end(), [&](const auto& file) {
    return file.elapsed < milliseconds(result.elapsed);
  });
  if (at == slowest.end() && slowest.size() >= kSlowFiles) return;
  slowest.insert(at, {result.task.job.file.full(), milliseconds(result.elapsed)});
  if (slowest.size() > kSlowFiles) slowest.pop_back();
}

void Tally::countFailed(const std::string& code) {
  ++summary_.failed;
  ++summary_.failedByReason[code];
}

std::uint64_t Tally::done() const {
  return summary_.files();
}

ScanProgress Tally::progress() {
  const Clock::time_point now = Clock::now();
  if (samples_.empty() || now - samples_.back().first >= kBetweenSamples)
    samples_.emplace_back(now, done());
  if (samples_.size() > kSamples) samples_.pop_front();
  const auto& [since, before] = samples_.front();
  const double seconds = std::chrono::duration<double>(now - since).count();
  ScanProgress progress;
  progress.done = done();
  progress.perSecond = seconds > 0 ? static_cast<double>(done() - before) / seconds : 0;
  progress.failed = summary_.failed;
  progress.bytesRead = summary_.bytesRead;
  progress.elapsed = milliseconds(now - begin_);
  return progress;
}

ScanSummary Tally::summary() const {
  ScanSummary summary = summary_;
  summary.elapsed = milliseconds(Clock::now() - begin_);
  return summary;
}

}  // namespace kolum::scan
