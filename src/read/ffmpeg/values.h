// From FFmpeg's structures to plain values, with the numbers that release 57 reported.
#ifndef KOLUM_READ_FFMPEG_VALUES_H
#define KOLUM_READ_FFMPEG_VALUES_H

#include "media/stream.h"

struct AVFormatContext;
struct AVRational;

namespace kolum::ffmpeg {

media::Container containerOf(AVFormatContext& context);
media::Rational rationalOf(const AVRational& value);

}  // namespace kolum::ffmpeg

#endif
