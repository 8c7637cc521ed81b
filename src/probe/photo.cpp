#include "probe/photo.h"

#include <utility>

#include "media/pixel_formats.h"

namespace kolum::probe {

namespace {

PhotoFacts factsOf(int width, int height, const std::string& pixelFormat) {
  return {.width = width,
          .height = height,
          .pixelFormat = media::classicPixelFormat(pixelFormat),
          .pixelFormatName = pixelFormat};
}

std::optional<PhotoFacts> pictureIn(const read::Findings& found) {
  if (found.picture)
    return factsOf(found.picture->width, found.picture->height, found.picture->pixelFormat);
  const media::Stream* stream =
      found.container ? found.container->first(media::StreamType::kVideo) : nullptr;
  if (stream == nullptr) return std::nullopt;
  return factsOf(stream->width, stream->height, stream->pixelFormat);
}

}  // namespace

PhotoResult probePhoto(const std::string& path, const Reading& reading) {
  auto found = findingsOf(path, {.container = ffmpeg::Depth::kStreams, .picture = true}, reading);
  if (!found) return {};
  return {.isReadable = found->picture || found->container,
          .picture = pictureIn(*found),
          .failure = found->failure,
          .found = std::move(*found)};
}

}  // namespace kolum::probe
