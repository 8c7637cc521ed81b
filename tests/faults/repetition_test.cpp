// Hosts run for months: what a step leaves in memory adds up, and so do threads.
#include <gtest/gtest.h>
#include <malloc.h>

#include <filesystem>
#include <iterator>

#include "faults/steps.h"

namespace fs = std::filesystem;

namespace kolum::test {

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kIsSanitized = true;
#else
constexpr bool kIsSanitized = false;
#endif

std::ptrdiff_t threads() {
  return std::distance(fs::directory_iterator("/proc/self/task"), {});
}

// In blocks in use, so that the answer is exact.
long memoryInUse() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<long>(info.uordblks + info.hblkhd);
}

// What so many calls of a step take.
long growth(const Step& step, int times) {
  const long before = memoryInUse();
  for (int i = 0; i < times; ++i) {
    step.prepare();
    EXPECT_TRUE(step.call());
  }
  return memoryInUse() - before;
}

// The allocator's caches hold back some blocks of FFmpeg's threads now and then, and give some out
// again, so not every round tells; but a step that keeps the smallest block each time takes more
// than half of that much in every one.
bool keepsNothing(const Step& step) {
  constexpr int kRounds = 20;
  constexpr int kCalls = 50;
  constexpr long kSmallestBlock = 32;
  for (int round = 0; round < kRounds; ++round)
    if (growth(step, kCalls) < kCalls * kSmallestBlock / 2) return true;
  return false;
}

TEST(Repetition, OfAnyStepTakesNoMemoryAndNoThread) {
  if (kIsSanitized) GTEST_SKIP() << "sanitizers keep books of their own in memory";
  inWorkshop([] {
    for (const Step& step : steps()) {
      if ((step.needs & kMounts) != 0) continue;
      SCOPED_TRACE(step.name);
      const std::ptrdiff_t before = threads();
      EXPECT_TRUE(keepsNothing(step));
      EXPECT_EQ(threads(), before);
    }
  });
}

}  // namespace

}  // namespace kolum::test
