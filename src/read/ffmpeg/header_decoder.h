// Decoders that are stopped when they ask for a picture's memory: by then they have read the
// header.
#ifndef KOLUM_READ_FFMPEG_HEADER_DECODER_H
#define KOLUM_READ_FFMPEG_HEADER_DECODER_H

#include <optional>

#include "read/ffmpeg/picture_parameters.h"

struct AVPacket;
struct AVStream;

namespace kolum::ffmpeg {

// What the decoder finds out about a stream's pictures before it decodes the first, which is in
// this packet; empty if it finds nothing.
std::optional<PictureParameters> decodeHeader(const AVStream& stream, const AVPacket& packet);

}  // namespace kolum::ffmpeg

#endif
