// Boxes of an MP4 or QuickTime file, read without FFmpeg.
#ifndef KOLUM_READ_HEADERS_MP4_BOXES_H
#define KOLUM_READ_HEADERS_MP4_BOXES_H

#include <kolum/video.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "media/source.h"

namespace kolum::headers {

// The position of a file's "moov" box. The values are the results of CheckMp4MoovAtEnd.
enum class MoovPosition {
  kNotLast = MP4_MOOV_NOT_LAST,
  kLastOrUnknownBox = MP4_MOOV_LAST,
  kUnreadable = MP4_MOOV_UNREADABLE
};
MoovPosition moovPosition(const media::Source& source);

// A file's MPEG4_* sub-format, 0 for an unknown brand; empty if no brand is found.
std::optional<std::uint32_t> mp4SubFormat(const media::Source& source);

struct TrackName {
  std::uint32_t track = 0;  // the number that the file gives it
  std::string name;         // UTF-8
};
// The names that people have given to tracks ("Commentary"), in the order of the file.
std::vector<TrackName> mp4TrackNames(const media::Source& source);

}  // namespace kolum::headers

#endif
