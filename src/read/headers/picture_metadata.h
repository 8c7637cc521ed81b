// What coded pictures carry beside the picture: light levels, dynamic metadata, captions. FFmpeg
// gives most of it only with decoded pictures.
#ifndef KOLUM_READ_HEADERS_PICTURE_METADATA_H
#define KOLUM_READ_HEADERS_PICTURE_METADATA_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "media/stream_details.h"

namespace kolum::headers {

struct PictureMetadata {
  std::optional<media::MasteringDisplay> masteringDisplay;
  std::optional<media::ContentLight> contentLight;
  // The transfer curve for those who know it, in the numbers of ITU-T H.273. Streams with hybrid
  // log-gamma often name an older curve for everyone else.
  std::optional<int> preferredTransfer;
  bool hasHdr10Plus = false;
  bool hasClosedCaptions = false;  // CEA-608 or 708
};

enum class NalSyntax { kH264, kHevc };

// The functions below add what they find to FOUND and leave the rest of it. They read until the
// first slice and leave damaged parts out.

// A packet of NAL units: each with its length in LENGTH_SIZE bytes in front, or after start codes
// if LENGTH_SIZE is 0.
void readNalUnits(std::span<const std::uint8_t> packet, NalSyntax syntax, std::size_t lengthSize,
                  PictureMetadata& found);

// The configuration of HEVC streams in MP4 and Matroska ("hvcC").
void readHevcConfiguration(std::span<const std::uint8_t> configuration, PictureMetadata& found);

// How many bytes the lengths in a stream with this configuration ("avcC" or "hvcC") have; 0 if it
// is none, and the stream therefore has start codes.
std::size_t lengthSizeOf(std::span<const std::uint8_t> configuration, NalSyntax syntax);

// The open bitstream units of AV1.
void readAv1Units(std::span<const std::uint8_t> units, PictureMetadata& found);
// The configuration of AV1 streams ("av1C").
void readAv1Configuration(std::span<const std::uint8_t> configuration, PictureMetadata& found);

void readMpeg2Picture(std::span<const std::uint8_t> packet, PictureMetadata& found);

// A message as registered by ITU-T T.35, from the country on.
void readRegisteredMessage(std::span<const std::uint8_t> message, PictureMetadata& found);

}  // namespace kolum::headers

#endif
