// What a header says about a stream's pictures, in FFmpeg's numbers.
#ifndef KOLUM_READ_FFMPEG_PICTURE_PARAMETERS_H
#define KOLUM_READ_FFMPEG_PICTURE_PARAMETERS_H

#include <cstdint>
#include <optional>

#include "media/rational.h"

namespace kolum::ffmpeg {

inline constexpr int kUnknownProfile = -99;  // or level

// What is empty is not stated, and the container's counts.
struct ColourParameters {
  std::optional<bool> isFullRange = {};
  std::optional<int> primaries = {};
  std::optional<int> transfer = {};
  std::optional<int> matrix = {};
  std::optional<int> chromaLocation = {};
};

struct PictureParameters {
  int width = 0;
  int height = 0;
  int pixelFormat = -1;
  int profile = kUnknownProfile;
  int level = kUnknownProfile;
  media::Rational sampleAspect = {0, 1};
  int heldBackPictures = 0;
  // A picture takes two units of a clock that ticks so often per second; 0 when not stated.
  std::uint32_t ticksPerSecond = 0;
  std::uint32_t unitTicks = 0;
  ColourParameters colours = {};
};

}  // namespace kolum::ffmpeg

#endif
