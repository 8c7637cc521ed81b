#include "machine/memory.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace kolum::tool {

namespace {

// So large a block is mapped on its own: every thread can use its place afterwards. Nothing touches
// it, so it takes no memory but the right to it.
constexpr std::size_t kSize = std::size_t{4} << 20;
std::atomic<void*> g_block = nullptr;

[[noreturn]] void giveBack() {
  std::free(g_block.exchange(nullptr));
  throw std::bad_alloc();
}

}  // namespace

void keepMemoryForFailure() {
  [[maybe_unused]] static const auto kFormer = std::set_new_handler(giveBack);
  if (g_block.load() != nullptr) return;
  void* block = std::malloc(kSize);
  if (block == nullptr) throw std::bad_alloc();
  std::free(g_block.exchange(block));
}

}  // namespace kolum::tool
