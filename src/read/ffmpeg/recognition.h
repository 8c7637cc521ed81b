// Recognises a file's format by its first bytes, whatever its name and even if it is incomplete.
#ifndef KOLUM_READ_FFMPEG_RECOGNITION_H
#define KOLUM_READ_FFMPEG_RECOGNITION_H

#include <string>

#include "media/source.h"

namespace kolum::ffmpeg {

struct Recognition {
  std::string format;              // in words, "QuickTime / MOV"; empty if FFmpeg knows none
  bool opensFurtherFiles = false;  // a playlist or script, which Input does not open
};

// Reads only the beginning.
Recognition recognize(const media::Source& source);

}  // namespace kolum::ffmpeg

#endif
