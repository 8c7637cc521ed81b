// How many files are read from a device at a time, and with what pauses: fewer while its reads are
// slow, because others use it or because it is failing.
#ifndef KOLUM_SCAN_PACE_H
#define KOLUM_SCAN_PACE_H

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace kolum::scan {

// Starts with all jobs. Halves them while files take several times as long as the device has shown
// it can do; with one job left, pauses as long as a file takes. Goes back step by step.
class Pace {
 public:
  using Duration = std::chrono::steady_clock::duration;

  explicit Pace(std::size_t mostJobs) : mostJobs_(mostJobs), jobs_(mostJobs) {}

  // A file was read. WAITING: the part of the time in which its thread did not compute.
  void finished(Duration waiting, std::uint64_t bytesRead);

  std::size_t jobs() const { return jobs_; }
  // After each file.
  Duration pause() const { return pause_; }
  bool isSlow() const { return jobs_ < mostJobs_ || pause_ > Duration::zero(); }

 private:
  void slowDown(double seconds);
  void speedUp();

  std::size_t mostJobs_;
  std::size_t jobs_;
  Duration pause_{0};
  int sinceChange_ = 0;
  // Waiting for a file, relative to what its size lets expect: what the device has shown, and the
  // mean of the last files. 0 before the first file.
  double best_ = 0;
  double recent_ = 0;
  double recentSeconds_ = 0;
};

}  // namespace kolum::scan

#endif
