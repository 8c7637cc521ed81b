// What WAV files really hold.
#ifndef KOLUM_READ_HEADERS_WAVE_H
#define KOLUM_READ_HEADERS_WAVE_H

#include <cstddef>
#include <cstdint>

#include "media/source.h"

namespace kolum::headers {

// Songs in DTS, AC-3 and other formats may be stored as if they were 16-bit samples, so FFmpeg
// looks for them in up to LENGTH bytes of samples that begin at POSITION. Whether it finds none for
// certain, however many of those bytes it looks at.
bool isPlainPcm(const media::Source& source, std::int64_t position, std::size_t length);

}  // namespace kolum::headers

#endif
