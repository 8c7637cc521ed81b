// Which FFmpeg is in use.
#ifndef KOLUM_READ_FFMPEG_VERSION_H
#define KOLUM_READ_FFMPEG_VERSION_H

#include <string>

namespace kolum::ffmpeg {

// Of the libraries that are loaded, which may be others than those of the build: "libavformat
// 59.27.100, libavcodec 59.37.100".
std::string versionInUse();

// Of the same libraries, as they were built: "LGPL version 2.1 or later".
std::string licenceInUse();

}  // namespace kolum::ffmpeg

#endif
