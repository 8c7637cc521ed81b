#include "probe/photo.h"

#include "media/pixel_formats.h"
#include "read/ffmpeg/input.h"

namespace kolum::probe {

PhotoResult probePhoto(const std::string& path) {
  const auto container = ffmpeg::readContainer(path, ffmpeg::Depth::kStreams);
  if (!container) return {};
  const media::Stream* picture = container->first(media::StreamType::kVideo);
  if (picture == nullptr) return {.isReadable = true, .picture = {}};
  return {.isReadable = true,
          .picture = PhotoFacts{.width = picture->width,
                                .height = picture->height,
                                .pixelFormat = media::classicPixelFormat(picture->pixelFormat)}};
}

}  // namespace kolum::probe
