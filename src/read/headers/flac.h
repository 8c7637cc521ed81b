// FLAC files, as far as FFmpeg does not tell.
#ifndef KOLUM_READ_HEADERS_FLAC_H
#define KOLUM_READ_HEADERS_FLAC_H

#include <cstdint>
#include <optional>

#include "media/source.h"

namespace kolum::headers {

// Where the sound begins, behind the tags and covers; empty if the file is no FLAC, or if its
// blocks make no sense.
std::optional<std::int64_t> flacSoundPosition(const media::Source& source);

}  // namespace kolum::headers

#endif
