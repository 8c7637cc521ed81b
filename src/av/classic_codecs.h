// The frozen codec numbering that hosts know.
#ifndef KOLUM_AV_CLASSIC_CODECS_H
#define KOLUM_AV_CLASSIC_CODECS_H

#include <string_view>

namespace kolum::av {

// The number of a codec that the frozen numbering does not know.
inline constexpr int kUnknownCodec = -1;

// The frozen number of the codec with this FFmpeg descriptor name ("h264" gives 28), or
// kUnknownCodec.
int classicCodecNumber(std::string_view descriptorName);

}  // namespace kolum::av

#endif
