// Whether the end of a file is missing, as far as its own structure says so.
#ifndef KOLUM_READ_HEADERS_TRUNCATION_H
#define KOLUM_READ_HEADERS_TRUNCATION_H

#include "media/source.h"

namespace kolum::headers {

// True only if a size in the file points beyond its end, or if its closing mark is missing: of MP4,
// Matroska, RIFF, AIFF, PNG, JPEG and GIF. Reads a few headers, and the last bytes.
bool isTruncated(const media::Source& source);

}  // namespace kolum::headers

#endif
