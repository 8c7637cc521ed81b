// Names of codec levels.
#ifndef KOLUM_MEDIA_LEVELS_H
#define KOLUM_MEDIA_LEVELS_H

#include <kolum/identifiers.h>

#include <string>

namespace kolum::media {

// FFmpeg's mark of an unknown profile or level.
inline constexpr int kUnknownLevel = LEVEL_UNKNOWN;

// A codec's (CODEC_ID_*) name for FFmpeg's level number: "3.1" for 31 of H.264; empty if the level
// is unknown.
std::string levelName(int codec, int level);

}  // namespace kolum::media

#endif
