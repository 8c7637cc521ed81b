// Which demuxers may read probed files.
#ifndef KOLUM_READ_FFMPEG_FILE_DEMUXERS_H
#define KOLUM_READ_FFMPEG_FILE_DEMUXERS_H

#include <string_view>

namespace kolum::ffmpeg {

// All except those that open further files: what a playlist or script names may hang, lead in
// circles or run programs. Comma-separated names, as FFmpeg takes them; static storage.
const char* fileDemuxers();

// Whether the demuxer of this name opens further files.
bool opensFurtherFiles(std::string_view demuxer);

}  // namespace kolum::ffmpeg

#endif
