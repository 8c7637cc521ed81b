// What VP9 pictures say about themselves in their "uncompressed header".
#ifndef KOLUM_READ_HEADERS_VP9_H
#define KOLUM_READ_HEADERS_VP9_H

#include <cstdint>
#include <optional>
#include <span>

namespace kolum::headers {

// As FFmpeg's decoder reports it after the first picture.
struct Vp9Parameters {
  int width = 0;
  int height = 0;
  const char* pixelFormat = "";  // FFmpeg's name
  int profile = 0;
  unsigned colourSpace = 0;  // in the numbers of the header, 0 to 7
  bool isFullRange = false;  // of the values of colours
};

// Reads a packet that holds one key frame which is shown. Empty for anything else, and for anything
// unusual, which only the decoder can judge.
std::optional<Vp9Parameters> readVp9KeyFrame(std::span<const std::uint8_t> packet);

}  // namespace kolum::headers

#endif
