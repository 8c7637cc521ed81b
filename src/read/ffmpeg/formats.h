// Which demuxers and decoders may read probed files. FFmpeg has hundreds more, for games of the
// eighties and formats of laboratories; no media library contains such files, unless somebody put
// them there to harm it.
#ifndef KOLUM_READ_FFMPEG_FORMATS_H
#define KOLUM_READ_FFMPEG_FORMATS_H

#include <string_view>

struct AVFormatContext;
struct AVStream;

namespace kolum::ffmpeg {

// By FFmpeg's name, which may be a list of names.
bool isAllowedDemuxer(std::string_view demuxer);

// Comma-separated names, as FFmpeg takes them; static storage.
const char* allowedDecoders();
// The same without the decoders of H.264.
const char* allowedDecodersButH264();

bool isAllowedCodec(const AVStream& stream);

// Whether a stream is the cover of a song or film.
bool isCover(const AVStream& stream);

// Whether an opened file is a still picture.
bool isStillPictureFile(const AVFormatContext& context);

// Whether an opened file has no stream but pictures of a kind that is not allowed.
bool isForeignPicture(const AVFormatContext& context);

// Whether the demuxer of this name opens further files: playlists and scripts.
bool opensFurtherFiles(std::string_view demuxer);

// Whether the demuxer reads on through bytes that it does not recognise, having no index to go by.
bool searchesForData(std::string_view demuxer);

}  // namespace kolum::ffmpeg

#endif
