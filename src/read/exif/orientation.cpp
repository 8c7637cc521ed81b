#include "read/exif/orientation.h"

#include <algorithm>

namespace kolum::exif {

namespace {

constexpr media::Orientation kOrientations[] = {
    {.value = 1, .degrees = 0, .isMirrored = false},
    {.value = 2, .degrees = 0, .isMirrored = true},
    {.value = 3, .degrees = 180, .isMirrored = false},
    {.value = 4, .degrees = 180, .isMirrored = true},
    {.value = 5, .degrees = 270, .isMirrored = true},
    {.value = 6, .degrees = 90, .isMirrored = false},
    {.value = 7, .degrees = 90, .isMirrored = true},
    {.value = 8, .degrees = 270, .isMirrored = false},
};

}  // namespace

std::optional<media::Orientation> orientationOf(std::int64_t number) {
  const auto* row = std::ranges::find(kOrientations, number, &media::Orientation::value);
  return row != std::end(kOrientations) ? std::optional(*row) : std::nullopt;
}

media::Orientation orientationOf(bool isMirrored, int degrees) {
  const int positive = (degrees % 360 + 360) % 360;
  return *std::ranges::find_if(kOrientations, [&](const media::Orientation& row) {
    return row.isMirrored == isMirrored && row.degrees == positive;
  });
}

media::PhotoSize turned(const media::PhotoSize& size, const media::Orientation& orientation) {
  if (orientation.degrees % 180 == 0) return size;
  return {.width = size.height, .height = size.width};
}

}  // namespace kolum::exif
