#include "read/headers/nal_units.h"

#include <algorithm>
#include <array>

namespace kolum::headers {

std::vector<std::uint8_t> payloadOf(std::span<const std::uint8_t> nalUnit) {
  std::vector<std::uint8_t> payload;
  payload.reserve(nalUnit.size());
  int zeros = 0;
  for (const std::uint8_t byte : nalUnit) {
    if (zeros >= 2 && byte == 3) {
      zeros = 0;
      continue;
    }
    zeros = byte == 0 ? zeros + 1 : 0;
    payload.push_back(byte);
  }
  return payload;
}

std::size_t startCodeAfter(std::span<const std::uint8_t> stream, std::size_t from) {
  constexpr std::array<std::uint8_t, 3> kStartCode = {0, 0, 1};
  const auto rest = stream.subspan(from);
  const auto found = std::search(rest.begin(), rest.end(), kStartCode.begin(), kStartCode.end());
  return from + static_cast<std::size_t>(found - rest.begin());
}

}  // namespace kolum::headers
