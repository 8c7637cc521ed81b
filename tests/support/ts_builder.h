// MPEG transport streams, packet by packet.
#ifndef KOLUM_TESTS_SUPPORT_TS_BUILDER_H
#define KOLUM_TESTS_SUPPORT_TS_BUILDER_H

#include <cstdint>
#include <string>
#include <string_view>

namespace kolum::test {

// So many packets of 188 bytes that carry nothing. The sync byte "G" is the only one in a packet.
std::string tsPackets(int count);

// Packets of 192 bytes: each of the 188 bytes long PACKETS behind four bytes of time stamp, FIRST
// in front of the first packet and STEP more in front of each further one.
std::string timeStampedPackets(std::string_view packets, std::uint32_t first,
                               std::uint32_t step = 0);

}  // namespace kolum::test

#endif
