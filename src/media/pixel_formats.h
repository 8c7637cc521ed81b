// The frozen pixel format numbering that hosts know.
#ifndef KOLUM_MEDIA_PIXEL_FORMATS_H
#define KOLUM_MEDIA_PIXEL_FORMATS_H

#include <string_view>

namespace kolum::media {

// The number of no pixel format, and of every format that came after release 57.
inline constexpr int kUnknownPixelFormat = -1;

// The frozen number of the pixel format that FFmpeg calls by this name ("yuv420p" gives 0), or
// kUnknownPixelFormat.
int classicPixelFormat(std::string_view name);

// The name of a frozen number; empty for a number that is not in use.
std::string_view classicPixelFormatName(int number);

}  // namespace kolum::media

#endif
