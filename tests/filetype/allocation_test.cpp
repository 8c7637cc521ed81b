// Classification runs for every file of a library, so it must not allocate once the index is built.
// A separate program, because it counts every allocation of the process.
#include <gtest/gtest.h>
#include <kolum/filetype.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <string>

namespace {

std::atomic<long> allocations{0};

}  // namespace

void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size > 0 ? size : 1)) return memory;
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  ++allocations;
  return std::malloc(size > 0 ? size : 1);
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace {

TEST(Classification, AllocatesNothingAfterTheFirstCall) {
  const std::string longName = std::string(100'000, 'x') + ".mp4";
  const char* names[] = {"a.mp4", "A.FLAC", "video_ts.ifo", "index.bdmv", "a.unknown",
                         "a",     "a.wpl",  "song.dts",     nullptr,      longName.c_str()};
  unsigned row = 0;
  unsigned tag = 0;
  KoLUM_GetFilenameType(nullptr, &row, 15, &tag);
  const long before = allocations;
  for (const char* name : names)
    for (unsigned kinds = 0; kinds < 16; ++kinds) KoLUM_GetFilenameType(name, &row, kinds, &tag);
  const long after = allocations;
  EXPECT_EQ(after, before);
}

}  // namespace
