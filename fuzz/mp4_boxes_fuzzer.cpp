#include <kolum/video.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "fuzz/memory_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const kolum::fuzz::MemoryFile file(data, size);
  unsigned subFormat = 0;
  if (GetMp4SubFormat(file.path().c_str(), &subFormat) == 0 && subFormat > 11) std::abort();
  const int verdict = CheckMp4MoovAtEnd(file.path().c_str());
  if (verdict < 0 || verdict > 2) std::abort();
  return 0;
}
