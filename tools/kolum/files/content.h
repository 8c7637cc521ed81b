// What the bytes of a file contain, whatever its name. This is the only place where the tool uses
// the layer below the library's public functions.
#ifndef KOLUM_TOOL_FILES_CONTENT_H
#define KOLUM_TOOL_FILES_CONTENT_H

#include <cstdint>
#include <optional>
#include <string>

#include "read/findings/findings.h"

namespace kolum::tool {

struct Content {
  std::string format;              // in words, "QuickTime / MOV"; empty if FFmpeg knows none
  bool opensFurtherFiles = false;  // a playlist or script, not opened
  bool hasVideo = false;           // covers count, as they do for the library
  bool hasAudio = false;
  bool isPicture = false;
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

Content contentOf(const std::string& path);

// The kind (MEDIA_KIND_*) of a file by its content; MEDIA_KIND_NONE also if FFmpeg recognises it
// only by its name.
int kindOf(const Content& content);

struct Picture {
  std::uint32_t width;  // pixels; 0 if unknown
  std::uint32_t height;
  std::string pixelFormat;  // FFmpeg's name; empty if unknown
};

// The picture in a file, opened only once: GetPhotoMetadata and GetPhotoHW would open it twice.
// FAILURE is set if an isolated reader failed.
std::optional<Picture> pictureOf(const std::string& path, std::optional<read::Failure>& failure);

}  // namespace kolum::tool

#endif
