// The details of streams, chapters and programs, from FFmpeg's structures.
#ifndef KOLUM_READ_FFMPEG_DETAILS_H
#define KOLUM_READ_FFMPEG_DETAILS_H

#include "media/stream.h"
#include "read/ffmpeg/first_pictures.h"

struct AVFormatContext;

namespace kolum::ffmpeg {

// Whether they are wanted of an input.
enum class Details { kLeftOut, kWanted };

// Adds them to the values of the same context. All their texts together have 1 MiB at most; further
// ones are left out.
void addDetails(const AVFormatContext& context, const FirstPictures& pictures,
                media::Container& container);

}  // namespace kolum::ffmpeg

#endif
