// What a worker answers is decoded only if it is well-formed, and means the same encoded again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "isolation/wire.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span<const std::uint8_t> bytes(data, size);
  const auto findings = kolum::isolation::decodeFindings(bytes);
  if (findings && kolum::isolation::encode(*findings).size() != size) std::abort();
  const auto request = kolum::isolation::decodeRequest(bytes);
  if (request && kolum::isolation::encode(*request).size() != size) std::abort();
  return 0;
}
