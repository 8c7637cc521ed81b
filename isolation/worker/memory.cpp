#include "memory.h"

#include <cerrno>
#include <cstddef>
#include <utility>

namespace {

bool hasRunOut = false;

#ifndef KOLUM_SANITIZED
void* noted(void* memory, std::size_t size) {
  if (memory == nullptr && size != 0) hasRunOut = true;
  return memory;
}
#endif

}  // namespace

// These stand in for the C library's functions in the whole process. Sanitizers bring their own.
#ifndef KOLUM_SANITIZED
extern "C" {

// NOLINTBEGIN(clang-diagnostic-reserved-identifier, readability-identifier-naming): C library
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);

void* malloc(std::size_t size) {
  return noted(__libc_malloc(size), size);
}

void* calloc(std::size_t count, std::size_t size) {
  return noted(__libc_calloc(count, size), count * size);
}

void* realloc(void* memory, std::size_t size) {
  return noted(__libc_realloc(memory, size), size);
}

void* memalign(std::size_t alignment, std::size_t size) {
  return noted(__libc_memalign(alignment, size), size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return memalign(alignment, size);
}

int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
  const bool isPowerOfTwo = (alignment & (alignment - 1)) == 0;
  if (alignment == 0 || alignment % sizeof(void*) != 0 || !isPowerOfTwo) return EINVAL;
  void* const found = memalign(alignment, size);
  if (found == nullptr) return ENOMEM;
  *memory = found;
  return 0;
}

// NOLINTEND(clang-diagnostic-reserved-identifier, readability-identifier-naming)

}  // extern "C"
#endif

namespace kolum::isolation {

bool hasMemoryRunOut() {
  return std::exchange(hasRunOut, false);
}

}  // namespace kolum::isolation
