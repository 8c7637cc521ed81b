// A short number for a file's content, to find copies by.
#ifndef KOLUM_READ_FFMPEG_FINGERPRINT_H
#define KOLUM_READ_FFMPEG_FINGERPRINT_H

#include <cstdint>
#include <string>

#include "media/source.h"

namespace kolum::ffmpeg {

// How much of each end of a file counts.
inline constexpr std::int64_t kFingerprintEnd = 65536;

// SHA-256, in hexadecimal digits, of the size (8 bytes, the lowest first), the first and the last
// kFingerprintEnd bytes; shorter files count once. Empty if they cannot be read. Throws
// std::bad_alloc.
std::string fingerprint(const media::Source& source);

}  // namespace kolum::ffmpeg

#endif
