// What is in a file by its bytes, whatever its name says. The one place where the tool looks past
// the library's public functions, at the layer that they stand on.
#ifndef KOLUM_TOOL_FILES_CONTENT_H
#define KOLUM_TOOL_FILES_CONTENT_H

#include <cstdint>
#include <optional>
#include <string>

namespace kolum::tool {

struct Content {
  std::string format;              // in words, "QuickTime / MOV"; empty when FFmpeg knows none
  bool opensFurtherFiles = false;  // a playlist or script, which is not opened
  bool hasVideo = false;           // covers count, as they do for the library
  bool hasAudio = false;
  bool isPicture = false;
  bool isFilm = false;  // video that is neither a picture nor a cover
  bool isDsd = false;   // a song in DSD
  // FFmpeg's name of the codec of the largest picture, or of the first sound, for which the library
  // has no number; empty when it has one.
  std::string unknownVideoCodec;
  std::string unknownAudioCodec;

  bool isOpen = false;  // FFmpeg found video, sound or subtitles
};

Content contentOf(const std::string& path);

// The kind (MEDIA_KIND_*) of a file by its content; MEDIA_KIND_NONE also when only its name makes
// FFmpeg take it for media.
int kindOf(const Content& content);

struct Picture {
  std::uint32_t width;  // pixels; 0 unknown
  std::uint32_t height;
  std::string pixelFormat;  // FFmpeg's name; empty when unknown
};

// The picture in a file, by opening it once: GetPhotoMetadata and GetPhotoHW open it once each.
std::optional<Picture> pictureOf(const std::string& path);

}  // namespace kolum::tool

#endif
