// What the bytes of a file contain, whatever its name.
#ifndef KOLUM_DESCRIBE_CONTENT_H
#define KOLUM_DESCRIBE_CONTENT_H

#include <optional>
#include <string>
#include <string_view>

#include "read/findings/findings.h"

namespace kolum::describe {

struct Content {
  std::string format;              // in words, "QuickTime / MOV"; empty if FFmpeg knows none
  bool opensFurtherFiles = false;  // a playlist or script, not opened
  bool hasVideo = false;           // covers count, as they do for the library
  bool hasAudio = false;
  bool isPicture = false;
  // A picture of the HEIF family by its first bytes. Not every release of FFmpeg can open one.
  bool isHeif = false;
  bool isFilm = false;  // video that is neither a picture nor a cover
  bool isDsd = false;   // a song in DSD
  // FFmpeg's name of the codec of the largest picture, or of the first audio stream, if the library
  // has no number for it; otherwise empty.
  std::string unknownVideoCodec;
  std::string unknownAudioCodec;

  bool isOpen = false;  // FFmpeg found video, audio or subtitles
  // Why nothing is known, if an isolated reader failed.
  std::optional<read::Failure> failure;
};

// All that contentOf() needs to know, and all that the probes of songs, videos and photos do.
inline constexpr read::Query kEverything = {.container = ffmpeg::Depth::kStreams,
                                            .mp4SubFormat = true,
                                            .transportPackets = true,
                                            .recognition = true,
                                            .content = true};

Content contentOf(const read::Findings& found);
// Of a file that is not open; empty if it cannot be opened.
Content contentOf(const std::string& path);

// Whether a MIME type is one of the HEIF family's: HEIC, AVIF and the like. Their containers say
// all that a document of a photo needs.
bool isHeif(std::string_view contentType);

// The kind (MEDIA_KIND_*) of a file by its content; MEDIA_KIND_NONE also if FFmpeg recognises it
// only by its name.
int kindOf(const Content& content);

}  // namespace kolum::describe

#endif
