// The layout of MPEG transport packets, found in a file's first bytes.
#ifndef KOLUM_READ_HEADERS_TS_PACKETS_H
#define KOLUM_READ_HEADERS_TS_PACKETS_H

#include <optional>

#include "base/trace.h"
#include "media/source.h"
#include "media/transport_packets.h"

namespace kolum::headers {

// The size is 0 if there are no packets. Empty if the file is too short for three of them or cannot
// be read; TRACE then gets the line that hosts expect on standard error.
std::optional<media::TransportPackets> packetsOf(const media::Source& source, Trace& trace);

}  // namespace kolum::headers

#endif
