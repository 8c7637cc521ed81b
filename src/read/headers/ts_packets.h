// The layout of MPEG transport packets, by a file's first bytes.
#ifndef KOLUM_READ_HEADERS_TS_PACKETS_H
#define KOLUM_READ_HEADERS_TS_PACKETS_H

#include <cstdint>
#include <optional>
#include <span>

#include "base/trace.h"
#include "media/source.h"
#include "media/transport_packets.h"

namespace kolum::headers {

// Bytes that the layout is found in.
inline constexpr std::size_t kPacketWindow = 576;

// Size 0 when there are no packets.
media::TransportPackets packetsIn(std::span<const std::uint8_t, kPacketWindow> bytes);

// The same of a file's beginning. Empty for one that is shorter or cannot be read.
std::optional<media::TransportPackets> packetsOf(const media::Source& source, Trace& trace);

}  // namespace kolum::headers

#endif
