// What the first coded picture of each video stream carries beside the picture.
#ifndef KOLUM_READ_FFMPEG_FIRST_PICTURES_H
#define KOLUM_READ_FFMPEG_FIRST_PICTURES_H

#include <map>

#include "read/headers/picture_metadata.h"

struct AVFormatContext;
struct AVPacket;
struct AVStream;

namespace kolum::ffmpeg {

class FirstPictures {
 public:
  // Only a stream's first packet counts.
  void look(const AVStream& stream, const AVPacket& packet);
  // Reads on in a context until every stream whose pictures may carry something had one. Most of
  // these packets were read before, when FFmpeg looked for the streams.
  void readOn(AVFormatContext& context);
  // Null if the stream had no packet.
  const headers::PictureMetadata* of(const AVStream& stream) const;

 private:
  std::map<int, headers::PictureMetadata> found_;  // by the stream's index
};

}  // namespace kolum::ffmpeg

#endif
