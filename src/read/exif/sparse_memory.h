// Memory that is zero where nothing was written to it, and only exists where something was.
#ifndef KOLUM_READ_EXIF_SPARSE_MEMORY_H
#define KOLUM_READ_EXIF_SPARSE_MEMORY_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace kolum::exif {

class SparseMemory {
 public:
  SparseMemory() = default;
  // Throws std::bad_alloc.
  explicit SparseMemory(std::size_t size);
  ~SparseMemory();
  SparseMemory(SparseMemory&& other) noexcept;
  SparseMemory& operator=(SparseMemory&& other) noexcept;

  std::span<std::uint8_t> bytes() { return {begin_, size_}; }
  std::span<const std::uint8_t> bytes() const { return {begin_, size_}; }

 private:
  std::uint8_t* begin_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace kolum::exif

#endif
