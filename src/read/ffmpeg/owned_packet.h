#ifndef KOLUM_READ_FFMPEG_OWNED_PACKET_H
#define KOLUM_READ_FFMPEG_OWNED_PACKET_H

#include <memory>

#include "read/ffmpeg/ffmpeg.h"

namespace kolum::ffmpeg {

struct PacketDeleter {
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using OwnedPacket = std::unique_ptr<AVPacket, PacketDeleter>;

}  // namespace kolum::ffmpeg

#endif
