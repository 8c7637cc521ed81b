// MPEG transport streams, packet by packet.
#ifndef KOLUM_TESTS_SUPPORT_TS_BUILDER_H
#define KOLUM_TESTS_SUPPORT_TS_BUILDER_H

#include <cstdint>
#include <string>
#include <string_view>

namespace kolum::test {

// COUNT null packets of 188 bytes. Each packet's only "G" is its sync byte.
std::string tsPackets(int count);

// Packets of 192 bytes: each of the 188-byte PACKETS after a time stamp of four bytes, which is
// FIRST for the first packet and grows by STEP.
std::string timeStampedPackets(std::string_view packets, std::uint32_t first,
                               std::uint32_t step = 0);

}  // namespace kolum::test

#endif
