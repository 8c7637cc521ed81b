// The layout of MPEG transport packets.
#ifndef KOLUM_MEDIA_TRANSPORT_PACKETS_H
#define KOLUM_MEDIA_TRANSPORT_PACKETS_H

namespace kolum::media {

// A file that cannot be read has size 0 and counts as time-stamped.
struct TransportPackets {
  unsigned size = 0;
  bool isTimeStamped = false;
};

}  // namespace kolum::media

#endif
