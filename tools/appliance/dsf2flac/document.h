// The XML document that dsf2flac prints.
#ifndef KOLUM_DSF2FLAC_DOCUMENT_H
#define KOLUM_DSF2FLAC_DOCUMENT_H

#include <cstddef>
#include <string>

#include "dsf2flac/dsd_file.h"

namespace kolum::dsf2flac {

// Readers keep only this many bytes, and lose the beginning of a longer document.
inline constexpr std::size_t kLongestDocument = 4095;

// Never longer than that, whatever the texts contain.
std::string documentOf(const DsdFacts& facts);

}  // namespace kolum::dsf2flac

#endif
