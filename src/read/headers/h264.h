// What H.264 streams say about themselves in their sequence parameter sets (SPS).
#ifndef KOLUM_READ_HEADERS_H264_H
#define KOLUM_READ_HEADERS_H264_H

#include <cstdint>
#include <optional>
#include <span>

#include "media/rational.h"

namespace kolum::headers {

// In the numbers of ITU-T H.273.
struct H264Colours {
  int primaries = 0;
  int transfer = 0;
  int matrix = 0;
};

// As FFmpeg's decoder reports it after the first pictures.
struct H264Parameters {
  int width = 0;
  int height = 0;
  const char* pixelFormat = "";  // FFmpeg's name
  int profile = 0;               // with FFmpeg's flags for constrained and intra profiles
  int level = 0;
  media::Rational sampleAspect = {0, 1};
  // How many pictures decoding holds back to put them in order, if the stream says so.
  std::optional<int> heldBackPictures;
  // A picture takes two units of a clock that ticks so often per second; 0 when not stated.
  std::uint32_t ticksPerSecond = 0;
  std::uint32_t unitTicks = 0;
  std::optional<bool> isFullRange;  // of the values of colours
  std::optional<H264Colours> colours;
  // Where colours are sampled, in the numbers of the standard; the default counts as stated once
  // there is any usability information.
  std::optional<int> chromaLocation;
};

// Reads one NAL unit without its start code. Empty for anything unusual, which only the decoder can
// judge.
std::optional<H264Parameters> readSps(std::span<const std::uint8_t> nalUnit);

// The SPS of the configuration that MP4, Matroska and FLV keep apart from the pictures ("avcC");
// empty if it has none or several, or is not whole, as the decoder then takes nothing of it.
std::span<const std::uint8_t> spsOfConfiguration(std::span<const std::uint8_t> configuration);
// The SPS before the first picture of a byte stream, which may be repeated; empty if there is none
// or they differ.
std::span<const std::uint8_t> spsOfByteStream(std::span<const std::uint8_t> stream);

// Whether a packet of a stream with such a configuration is whole and holds a picture, and no other
// SPS.
bool isPlainPicture(std::span<const std::uint8_t> packet,
                    std::span<const std::uint8_t> configuration);

}  // namespace kolum::headers

#endif
