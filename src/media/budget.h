// What one call may use up on a file. Whoever made the file, reading then ends as at its end, and
// what was found until then counts. Real files stay far below.
#ifndef KOLUM_MEDIA_BUDGET_H
#define KOLUM_MEDIA_BUDGET_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace kolum::media {

namespace budget {

// A raw photo of 100 MB is read once; the index of a film of a day has 50 MB.
inline constexpr std::int64_t kBytes = std::int64_t{1} << 30;
// A probe takes milliseconds; appliances may be thirty times slower than that, or busy.
inline constexpr std::chrono::seconds kProcessorTime{10};
// A sleeping disk needs ten seconds.
inline constexpr std::chrono::seconds kWallTime{60};
// What one operation (opening, finding the streams, seeking, reading a packet) of a demuxer that
// searches for data may read. FFmpeg itself stops after 5 MB of packets, but counts only what it
// recognizes as such, and reads the end of a recording for its duration.
inline constexpr std::int64_t kSearchedBytes = std::int64_t{16} << 20;
// Audio books have a track or two, discs some dozens.
inline constexpr int kStreams = 1000;
// The largest picture that is decoded, if only that says what it is. Of larger ones, headers count.
inline constexpr std::int64_t kDecodedPixels = std::int64_t{16} << 20;
// What the frames of an ID3v2 tag may inflate to.
inline constexpr std::int64_t kInflatedTag = std::int64_t{16} << 20;

}  // namespace budget

// Counts what a call uses up, from its construction on, by one thread.
class Meter {
 public:
  void countBytes(std::size_t bytes) { bytes_ += static_cast<std::int64_t>(bytes); }
  std::uint64_t bytesRead() const noexcept { return static_cast<std::uint64_t>(bytes_); }
  bool isUsedUp() const noexcept;

 private:
  using Clock = std::chrono::steady_clock;
  bool isProcessorTimeUsedUp(Clock::duration wallTime) const noexcept;

  Clock::time_point begin_ = Clock::now();
  std::int64_t bytes_ = 0;
  mutable std::optional<std::chrono::nanoseconds> processorTimeBefore_;
  mutable bool isUsedUp_ = false;
};

}  // namespace kolum::media

#endif
