// Hosts run for months, so leaked memory and threads add up.
#include <gtest/gtest.h>
#include <malloc.h>

#include <filesystem>
#include <iterator>

#include "faults/steps.h"

namespace fs = std::filesystem;

namespace kolum::test {

namespace {

#ifdef KOLUM_SANITIZED
constexpr bool kIsSanitized = true;
#else
constexpr bool kIsSanitized = false;
#endif

std::ptrdiff_t threads() {
  return std::distance(fs::directory_iterator("/proc/self/task"), {});
}

// Counts allocated blocks, so that the result is exact.
long memoryInUse() {
  const struct mallinfo2 info = mallinfo2();
  return static_cast<long>(info.uordblks + info.hblkhd);
}

// The growth of memory over TIMES calls of a step.
long growth(const Step& step, int times) {
  const long before = memoryInUse();
  for (int i = 0; i < times; ++i) {
    step.prepare();
    EXPECT_TRUE(step.call());
  }
  return memoryInUse() - before;
}

// The allocator's caches sometimes keep or reuse blocks of FFmpeg's threads, so single rounds vary;
// but a step that leaks even the smallest block on each call exceeds half of that sum in every
// round.
bool keepsNothing(const Step& step) {
  constexpr int kRounds = 20;
  constexpr int kCalls = 50;
  constexpr long kSmallestBlock = 32;
  for (int round = 0; round < kRounds; ++round)
    if (growth(step, kCalls) < kCalls * kSmallestBlock / 2) return true;
  return false;
}

TEST(Repetition, LeaksNoMemoryAndNoThreads) {
  if (kIsSanitized) GTEST_SKIP() << "sanitizers allocate memory for themselves";
  inPreparedSandbox([] {
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
