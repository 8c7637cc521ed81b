// Looks for transport packets: the result is one of two sizes, and only the longer packets have
// time stamps.
#include <kolum/video.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "fuzz/memory_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr unsigned kUntouched = 4711;
  const kolum::fuzz::MemoryFile file(data, size);
  unsigned packetSize = kUntouched;
  const int result = ProbeTsPacketSize(file.path().c_str(), &packetSize);
  if (packetSize == kUntouched) {
    if (result != 1) std::abort();
    return 0;
  }
  if (packetSize != 0 && packetSize != 188 && packetSize != 192) std::abort();
  if (result == 1 && packetSize != 192) std::abort();
  return 0;
}
