// Which format a file's first bytes are of, whatever its name says and whether it is whole or not.
#ifndef KOLUM_READ_FFMPEG_RECOGNITION_H
#define KOLUM_READ_FFMPEG_RECOGNITION_H

#include <string>

#include "media/source.h"

namespace kolum::ffmpeg {

struct Recognition {
  std::string format;              // in words, "QuickTime / MOV"; empty when FFmpeg knows none
  bool opensFurtherFiles = false;  // a playlist or script, which Input does not open
};

// Reads no more than the beginning.
Recognition recognize(const media::Source& source);

}  // namespace kolum::ffmpeg

#endif
