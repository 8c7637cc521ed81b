// Which format a file's first bytes are of, whatever its name says and whether it is whole or not.
#ifndef KOLUM_AV_RECOGNITION_H
#define KOLUM_AV_RECOGNITION_H

#include <string>

namespace kolum::av {

struct Recognition {
  std::string format;              // in words, "QuickTime / MOV"; empty when FFmpeg knows none
  bool opensFurtherFiles = false;  // a playlist or script, which Input does not open
};

// Reads no more than the beginning. What is no regular file is of no format.
Recognition recognize(const char* path);

}  // namespace kolum::av

#endif
