// The units of which H.264, HEVC and MPEG-2 streams consist.
#ifndef KOLUM_READ_HEADERS_NAL_UNITS_H
#define KOLUM_READ_HEADERS_NAL_UNITS_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kolum::headers {

// Without the bytes that keep start codes from appearing inside a NAL unit.
std::vector<std::uint8_t> payloadOf(std::span<const std::uint8_t> nalUnit);

// Where the next start code (00 00 01) begins at or after a position; the end if there is none.
std::size_t startCodeAfter(std::span<const std::uint8_t> stream, std::size_t from);

}  // namespace kolum::headers

#endif
