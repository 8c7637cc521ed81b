// The only place that includes Exiv2, of release 0.27 or 0.28, and knows how these differ.
#ifndef KOLUM_READ_EXIF_EXIV2_H
#define KOLUM_READ_EXIF_EXIV2_H

#include <cstddef>
#include <cstdint>
#include <exiv2/exiv2.hpp>

namespace kolum::exif {

// How Exiv2 counts bytes that it decodes.
#if EXIV2_TEST_VERSION(0, 28, 0)
using ExivSize = std::size_t;
#else
using ExivSize = std::uint32_t;
#endif

}  // namespace kolum::exif

#endif
