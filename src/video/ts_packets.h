// The layout of MPEG transport packets, told by a file's first bytes.
#ifndef KOLUM_VIDEO_TS_PACKETS_H
#define KOLUM_VIDEO_TS_PACKETS_H

#include <string>

#include "video/dlna.h"

namespace kolum::video {

// What ProbeTsPacketSize tells, with size 0 for a file that cannot be read.
TransportPackets transportPackets(const std::string& path);

}  // namespace kolum::video

#endif
