// The frozen codec numbers that hosts know.
#ifndef KOLUM_MEDIA_CLASSIC_CODECS_H
#define KOLUM_MEDIA_CLASSIC_CODECS_H

#include <string_view>

namespace kolum::media {

// The number of no codec, and of every codec added after release 57: that release reported such a
// stream as one without a codec, and hosts store what it reported.
inline constexpr int kNoCodec = 0;

// The frozen number of the codec with this FFmpeg descriptor name ("h264" gives 28), or
// kNoCodec.
int classicCodecNumber(std::string_view descriptorName);

}  // namespace kolum::media

#endif
