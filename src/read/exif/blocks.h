// Finds the parts of a photo that describe it, in whatever container they are: nothing else of the
// file is read, and nothing of them is understood yet.
#ifndef KOLUM_READ_EXIF_BLOCKS_H
#define KOLUM_READ_EXIF_BLOCKS_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "media/photo_tags.h"
#include "media/source.h"
#include "read/exif/sparse_memory.h"

namespace kolum::exif {

// What all parts together may have. XMP of edited raw photos has some hundred KB, and so have
// colour profiles of printers.
inline constexpr std::size_t kLargestBlock = std::size_t{4} << 20;

using Bytes = std::vector<std::uint8_t>;

enum class TiffKind { kPlain, kOlympus, kPanasonic };

// A part of the extended XMP of a JPEG file.
struct XmpPart {
  std::string guid;         // of the whole
  std::uint64_t total = 0;  // size of the whole
  std::uint64_t offset = 0;
  std::string bytes;
};

struct Blocks {
  bool isTiff = false;  // a TIFF file, so Exif's first directory describes its picture
  TiffKind tiffKind = TiffKind::kPlain;
  SparseMemory tiff;  // Exif: a TIFF structure, perhaps without its pictures
  std::string xmp;
  std::vector<XmpPart> extendedXmp;  // in the order of the file
  Bytes iptc;                        // datasets of the Information Interchange Model
  Bytes iccProfile;
  // What the container itself says, which counts more than Exif.
  std::optional<media::PhotoSize> size;
  std::optional<media::Orientation> orientation;
};

// Empty if the file is no photo with such parts, as far as its first bytes show.
std::optional<Blocks> findBlocks(const media::Source& source);

// The readers of containers. Each adds what it finds to BLOCKS and stops at the first thing that
// makes no sense. BEGIN is where the container begins in the file.
void findInJpeg(const media::Source& source, std::int64_t begin, Blocks& blocks);
void findInPng(const media::Source& source, Blocks& blocks);
void findInWebp(const media::Source& source, Blocks& blocks);
void findInGif(const media::Source& source, Blocks& blocks);
void findInHeif(const media::Source& source, Blocks& blocks);
void findInCanonRaw3(const media::Source& source, Blocks& blocks);
void findInJpegXl(const media::Source& source, Blocks& blocks);
void findInFujifilmRaw(const media::Source& source, Blocks& blocks);
void findInTiff(const media::Source& source, Blocks& blocks);

// --- For these readers

// SIZE bytes at POSITION; empty if the file has fewer there, or if they are more than any block.
Bytes bytesAt(const media::Source& source, std::int64_t position, std::uint64_t size);

// A TIFF structure in memory, perhaps after the "Exif\0\0" that some writers put in front.
void takeExif(std::span<const std::uint8_t> bytes, Blocks& blocks);

}  // namespace kolum::exif

#endif
