// MP4 boxes, byte by byte, and small changes to real MP4 files.
#ifndef KOLUM_TESTS_SUPPORT_MP4_BUILDER_H
#define KOLUM_TESTS_SUPPORT_MP4_BUILDER_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace kolum::test {

// A box with a 32-bit size. TYPE has four characters.
std::string box(const std::string& type, const std::string& payload);

// A box whose 32-bit size is 1 and whose 64-bit size follows the type.
std::string largeBox(const std::string& type, const std::string& payload);

// A box whose payload begins with a version and 24 bits of flags.
std::string fullBox(const std::string& type, int version, std::uint32_t flags,
                    const std::string& payload);

// The file type box: BRAND, the minor version 0 and the compatible brands, four characters each.
std::string ftyp(const std::string& brand,
                 const std::vector<std::string>& compatibleBrands = {"isom", "iso2"});

// VALUE in SIZE bytes, the most significant first.
std::string bigEndian(std::uint64_t value, int size);

// The same with the least significant byte first.
std::string littleEndian(std::uint64_t value, int size);

// The nine numbers of a track's matrix.
using TrackMatrix = std::array<std::int32_t, 9>;

// Rotates clockwise by DEGREES; also mirrors left to right if FLIPPED.
TrackMatrix rotationMatrix(int degrees, bool flipped = false);

// A copy of an MP4 file (with its index at the end, as ffmpeg writes it) with this matrix in its
// first track.
std::string withTrackMatrix(const std::string& mp4Path, const TrackMatrix& matrix);

// A copy with these boxes at the end of the first sample description of its first track.
std::string withDescriptionBoxes(const std::string& mp4Path, const std::string& boxes);

// A copy whose first track, a video, is marked as spherical: "equi" (equirectangular) or "cbmp"
// (the six sides of a cube).
std::string withSphericalBox(const std::string& mp4Path, const std::string& projection = "equi");

}  // namespace kolum::test

#endif
