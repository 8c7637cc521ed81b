// The layout of MPEG transport packets, found in a file's first bytes.
#ifndef KOLUM_READ_HEADERS_TS_PACKETS_H
#define KOLUM_READ_HEADERS_TS_PACKETS_H

#include <cstdint>
#include <optional>
#include <span>

#include "base/trace.h"
#include "media/source.h"
#include "media/transport_packets.h"

namespace kolum::headers {

// The number of bytes examined.
inline constexpr std::size_t kPacketWindow = 576;

// The size is 0 if there are no packets.
media::TransportPackets packetsIn(std::span<const std::uint8_t, kPacketWindow> bytes);

// The same for the beginning of a file. Empty if the file is shorter or cannot be read.
std::optional<media::TransportPackets> packetsOf(const media::Source& source, Trace& trace);

}  // namespace kolum::headers

#endif
