// Recognises containers by bytes that leave no doubt.
#ifndef KOLUM_READ_HEADERS_SIGNATURES_H
#define KOLUM_READ_HEADERS_SIGNATURES_H

#include <string_view>

#include "media/source.h"

namespace kolum::headers {

// FFmpeg's short name of the demuxer that its own search would choose; empty if only that search
// can say.
std::string_view demuxerOf(const media::Source& source);

}  // namespace kolum::headers

#endif
