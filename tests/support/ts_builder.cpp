#include "support/ts_builder.h"

#include <algorithm>

#include "support/mp4_builder.h"

namespace kolum::test {

namespace {

constexpr std::size_t kPacketSize = 188;

}  // namespace

std::string tsPackets(int count) {
  // Sync byte, the packet identifier of null packets, no adaptation field.
  const std::string header = "\x47\x1F\xFF\x10";
  std::string packets;
  for (int i = 0; i < count; ++i)
    packets += header + std::string(kPacketSize - header.size(), '\xFF');
  return packets;
}

std::string timeStampedPackets(std::string_view packets, std::uint32_t first, std::uint32_t step) {
  std::string stamped;
  for (std::uint32_t stamp = first; !packets.empty(); stamp += step) {
    stamped += bigEndian(stamp, 4);
    stamped += packets.substr(0, kPacketSize);
    packets.remove_prefix(std::min(kPacketSize, packets.size()));
  }
  return stamped;
}

}  // namespace kolum::test
