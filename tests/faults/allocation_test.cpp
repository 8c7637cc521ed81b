// Runs every step with its first, second, third, ... allocation failing, until none is left.
//
// The allocations that fail are those by operator new in the library and in the C++ libraries that
// it uses, and the library's own calls of malloc() and calloc() (through the linker's --wrap).
#include <gtest/gtest.h>
#include <pthread.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

#include "faults/steps.h"

namespace {

constexpr int kNever = -1;
// The number of allocations of this thread that still succeed.
thread_local int allocationsLeft = kNever;
thread_local bool hasFailed = false;

// Processes that a step starts are not affected.
[[maybe_unused]] const int kForksAreSpared =
    pthread_atfork(nullptr, nullptr, [] { allocationsLeft = kNever; });

bool mayAllocate() {
  if (allocationsLeft == kNever) return true;
  if (allocationsLeft > 0) {
    --allocationsLeft;
    return true;
  }
  // Only one fails, so that handling the failure can allocate.
  allocationsLeft = kNever;
  hasFailed = true;
  return false;
}

}  // namespace

extern "C" {
// TagLib itself leaks when memory runs out. Leaks of this project are still found, because their
// stacks do not include TagLib.
const char* __lsan_default_suppressions() {
  return "leak:libtag.so";
}

void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __wrap_malloc(std::size_t size) {
  return mayAllocate() ? __real_malloc(size) : nullptr;
}
void* __wrap_calloc(std::size_t count, std::size_t size) {
  return mayAllocate() ? __real_calloc(count, size) : nullptr;
}
}

void* operator new(std::size_t size) {
  void* memory = mayAllocate() ? __real_malloc(size != 0 ? size : 1) : nullptr;
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new[](std::size_t size) {
  return operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return mayAllocate() ? __real_malloc(size != 0 ? size : 1) : nullptr;
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept {
  std::free(memory);
}

namespace kolum::test {

namespace {

// Fails each allocation of a step in turn; returns how many there were.
int failEachAllocation(const Step& step) {
  constexpr int kMost = 5000;
  for (int n = 0; n < kMost; ++n) {
    hasFailed = false;
    SCOPED_TRACE("allocation " + std::to_string(n));
    const bool isDone = runDisturbed(
        step, [n] { allocationsLeft = n; }, [] { allocationsLeft = kNever; });
    if (!hasFailed) {
      EXPECT_TRUE(isDone) << "no allocation failed";
      return n;
    }
  }
  ADD_FAILURE() << "too many allocations";
  return kMost;
}

TEST(AllocationFaults, LeaveNothingBehindAndTheStepWorking) {
  inPreparedSandbox([] {
    for (const Step& step : steps()) {
      SCOPED_TRACE(step.name);
      // Mounting is slow, and the content of an image is probed like any other file.
      if ((step.needs & kMounts) != 0) continue;
      std::printf("%s\n", step.name.c_str());
      std::fflush(stdout);
      EXPECT_TRUE(runUndisturbed(step));
      const int failed = failEachAllocation(step);
      std::printf("%d allocations\n", failed);
      EXPECT_TRUE(runUndisturbed(step));
    }
  });
}

TEST(AllocationFaults, LeaveNoMountOfDiscImage) {
  inPreparedSandbox([] {
    for (const Step& step : steps()) {
      if ((step.needs & kMounts) == 0) continue;
      SCOPED_TRACE(step.name);
      for (int n = 0; n < 12; ++n) {
        SCOPED_TRACE("allocation " + std::to_string(n));
        runDisturbed(
            step, [n] { allocationsLeft = n; }, [] { allocationsLeft = kNever; });
      }
      EXPECT_TRUE(runUndisturbed(step));
    }
  });
}

}  // namespace

}  // namespace kolum::test
