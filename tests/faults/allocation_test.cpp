// Every step with its first, second, third, ... allocation failing, until it makes no more.
//
// What fails are the C++ allocations of the library and of the libraries written in C++ that it
// uses, and the library's own calls of malloc() and calloc() (through the linker's --wrap).
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
// The number of allocations that still succeed, of this thread.
thread_local int allocationsLeft = kNever;
thread_local bool hasFailed = false;

// Programs that a step starts are not meant.
[[maybe_unused]] const int kForksAreSpared =
    pthread_atfork(nullptr, nullptr, [] { allocationsLeft = kNever; });

bool mayAllocate() {
  if (allocationsLeft == kNever) return true;
  if (allocationsLeft > 0) {
    --allocationsLeft;
    return true;
  }
  // One fails, and what deals with that finds memory again.
  allocationsLeft = kNever;
  hasFailed = true;
  return false;
}

}  // namespace

extern "C" {
// TagLib loses what it was making when memory ran out. That is not ours to mend, and what is ours
// is told apart by its stack.
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

// How many of a step's allocations were made to fail.
int failEachAllocation(const Step& step) {
  constexpr int kMost = 5000;
  for (int n = 0; n < kMost; ++n) {
    hasFailed = false;
    SCOPED_TRACE("allocation " + std::to_string(n));
    const bool isDone = runDisturbed(
        step, [n] { allocationsLeft = n; }, [] { allocationsLeft = kNever; });
    if (!hasFailed) {
      EXPECT_TRUE(isDone) << "undisturbed";
      return n;
    }
  }
  ADD_FAILURE() << "no end of allocations";
  return kMost;
}

TEST(AllocationFaults, EachLeavesNothingBehindAndTheStepWorkingAfterwards) {
  inWorkshop([] {
    for (const Step& step : steps()) {
      SCOPED_TRACE(step.name);
      // Mounting takes its time, and what is inside the image is probed like any file.
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

TEST(AllocationFaults, OfADiscImageLeaveNoMount) {
  inWorkshop([] {
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
