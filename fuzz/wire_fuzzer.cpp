// What a worker answers is decoded only if it is well-formed, and means the same encoded again. It
// never takes more memory than messages may.
#include <malloc.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "isolation/wire.h"

namespace {

// What the process has in use, and what a message may add to it; above that, it is a finding.
std::size_t inUse = 0;
std::size_t most = SIZE_MAX;

class Bounded {
 public:
  Bounded() { most = inUse + 2 * kolum::isolation::kMostDecoded; }
  ~Bounded() { most = SIZE_MAX; }
  Bounded(const Bounded&) = delete;
  Bounded& operator=(const Bounded&) = delete;
};

}  // namespace

void* operator new(std::size_t size) {
  void* memory = std::malloc(size > 0 ? size : 1);
  if (memory == nullptr) throw std::bad_alloc();
  inUse += malloc_usable_size(memory);
  if (inUse > most) std::abort();
  return memory;
}
void operator delete(void* memory) noexcept {
  if (memory != nullptr) inUse -= malloc_usable_size(memory);
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span<const std::uint8_t> bytes(data, size);
  std::optional<kolum::read::Findings> findings;
  std::optional<kolum::isolation::Request> request;
  {
    const Bounded bounded;
    findings = kolum::isolation::decodeFindings(bytes);
    request = kolum::isolation::decodeRequest(bytes);
    if (findings && findings->disc) discOf(*findings->disc);
  }
  if (findings && kolum::isolation::encode(*findings).size() != size) std::abort();
  if (request && kolum::isolation::encode(*request).size() != size) std::abort();
  return 0;
}
