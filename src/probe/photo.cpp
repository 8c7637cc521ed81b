#include "probe/photo.h"

#include <string_view>

#include "isolation/isolation.h"
#include "media/pixel_formats.h"

namespace kolum::probe {

namespace {

PhotoResult photo(int width, int height, std::string_view pixelFormat) {
  return {
      .isReadable = true,
      .picture = PhotoFacts{
          .width = width, .height = height, .pixelFormat = media::classicPixelFormat(pixelFormat)}};
}

}  // namespace

PhotoResult probePhoto(const std::string& path) {
  const auto source = media::Source::open(path);
  if (!source) return {};
  const read::Findings found =
      isolation::look(*source, {.container = ffmpeg::Depth::kStreams, .picture = true});
  if (found.picture)
    return photo(found.picture->width, found.picture->height, found.picture->pixelFormat);
  PhotoResult result = {.isReadable = found.container.has_value(), .failure = found.failure};
  const media::Stream* picture =
      found.container ? found.container->first(media::StreamType::kVideo) : nullptr;
  return picture != nullptr ? photo(picture->width, picture->height, picture->pixelFormat) : result;
}

}  // namespace kolum::probe
