// The frozen pixel format numbers that hosts know.
#ifndef KOLUM_MEDIA_PIXEL_FORMATS_H
#define KOLUM_MEDIA_PIXEL_FORMATS_H

#include <string_view>

namespace kolum::media {

// The number of no pixel format, and of every format added after release 57.
inline constexpr int kUnknownPixelFormat = -1;

// The frozen number of the pixel format with this FFmpeg name ("yuv420p" gives 0), or
// kUnknownPixelFormat.
int classicPixelFormat(std::string_view name);

// The name of a frozen number; empty if the number is not used.
std::string_view classicPixelFormatName(int number);

}  // namespace kolum::media

#endif
