// What belongs to a photo: the others of a burst, and a film.
#include <algorithm>
#include <climits>
#include <cmath>
#include <string>
#include <string_view>

#include "base/bytes.h"
#include "read/exif/readers.h"
#include "read/exif/texts.h"

namespace kolum::exif {

namespace {

using namespace std::string_view_literals;

// --- Apple's notes, which Exiv2 leaves as they are: a big-endian directory

constexpr unsigned kAppleBurst = 0x000B;
constexpr unsigned kAppleContent = 0x0011;

std::string appleText(std::span<const std::uint8_t> notes, unsigned wanted) {
  constexpr std::string_view kHeader = "Apple iOS\0\0\1MM"sv;
  constexpr unsigned kAscii = 2;
  constexpr std::uint64_t kMostEntries = 256;
  if (!textOf(notes).starts_with(kHeader)) return {};
  ByteReader reader(notes);
  reader.skip(kHeader.size());
  const auto count = std::min(reader.bigEndian(2), kMostEntries);
  for (std::uint64_t i = 0; i < count; ++i) {
    const auto tag = reader.bigEndian(2);
    const auto type = reader.bigEndian(2);
    const auto size = reader.bigEndian(4);
    const auto offset = reader.bigEndian(4);
    if (reader.failed()) break;
    if (tag != wanted || type != kAscii || size <= 4) continue;
    ByteReader value(notes);
    value.skip(offset);
    return paddedText(value.text(size));
  }
  return {};
}

// --- Google's, in XMP

std::optional<std::int64_t> countIn(std::optional<double> number) {
  constexpr double kMost = 1e15;
  if (!number || *number < 1 || *number > kMost || *number != std::floor(*number))
    return std::nullopt;
  return static_cast<std::int64_t>(*number);
}

// The parts of the file behind the picture, in their order. The film begins that many bytes before
// the end as it and all behind it have.
std::optional<std::int64_t> containedFilm(const Metadata& metadata) {
  constexpr unsigned kMostItems = 32;
  const Xmp& xmp = metadata.xmp();
  std::optional<std::int64_t> size;
  for (unsigned i = 1; i <= kMostItems; ++i) {
    const std::string semantic = xmp.text(XmpProperty::kItemSemantic, i);
    if (semantic.empty()) break;
    const auto length = countIn(numberIn(xmp.text(XmpProperty::kItemLength, i)));
    if (semantic == "MotionPhoto")
      size = length;
    else if (size)
      *size += length.value_or(0);
  }
  return size;
}

}  // namespace

void readCompanions(const Metadata& metadata, media::PhotoTags& tags) {
  const Bytes notes = metadata.bytes(kPhoto, 0x927C);
  tags.burst = appleText(notes, kAppleBurst);
  if (tags.burst.empty()) tags.burst = metadata.xmp().text(XmpProperty::kBurst);
  tags.livePhoto = appleText(notes, kAppleContent);
  tags.motionPhoto = containedFilm(metadata);
  if (!tags.motionPhoto)
    tags.motionPhoto = countIn(numberIn(metadata.xmp().text(XmpProperty::kMicroVideoOffset)));
}

}  // namespace kolum::exif
