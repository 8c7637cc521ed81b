// Frames of MPEG audio.
#ifndef KOLUM_READ_HEADERS_MPEG_AUDIO_H
#define KOLUM_READ_HEADERS_MPEG_AUDIO_H

#include <cstdint>
#include <span>

namespace kolum::headers {

// Whether there are so many layer III frames of the same kind, one after the other, that FFmpeg's
// search takes the file for an MP3.
bool beginsWithMp3Frames(std::span<const std::uint8_t> sound);

}  // namespace kolum::headers

#endif
