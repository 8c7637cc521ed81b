// Colour profiles of the International Color Consortium.
#ifndef KOLUM_READ_EXIF_ICC_PROFILE_H
#define KOLUM_READ_EXIF_ICC_PROFILE_H

#include <cstdint>
#include <span>
#include <string>

namespace kolum::exif {

// The profile's own description ("Display P3"), in the first language that it has; empty if there
// is none.
std::string iccDescription(std::span<const std::uint8_t> profile);

}  // namespace kolum::exif

#endif
