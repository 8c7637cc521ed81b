#include "read/exif/sparse_memory.h"

#include <sys/mman.h>

#include <new>
#include <utility>

namespace kolum::exif {

SparseMemory::SparseMemory(std::size_t size) : size_(size) {
  if (size == 0) return;
  constexpr int kFlags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE;
  // cppcheck-suppress invalidFunctionArg; memory without a file has no descriptor
  void* const memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, kFlags, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  begin_ = static_cast<std::uint8_t*>(memory);
}

SparseMemory::~SparseMemory() {
  if (begin_ != nullptr) munmap(begin_, size_);
}

SparseMemory::SparseMemory(SparseMemory&& other) noexcept
    : begin_(std::exchange(other.begin_, nullptr)), size_(std::exchange(other.size_, 0)) {}

SparseMemory& SparseMemory::operator=(SparseMemory&& other) noexcept {
  std::swap(begin_, other.begin_);
  std::swap(size_, other.size_);
  return *this;
}

}  // namespace kolum::exif
