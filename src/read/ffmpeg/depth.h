#ifndef KOLUM_READ_FFMPEG_DEPTH_H
#define KOLUM_READ_FFMPEG_DEPTH_H

namespace kolum::ffmpeg {

// How much of an input is read when it is opened.
enum class Depth {
  kHeader,       // the container's header only
  kStreams,      // also packets, until FFmpeg knows the streams as well as it can
  kStreamTimes,  // also the times at which streams start, and packets can be read from there
};

}  // namespace kolum::ffmpeg

#endif
