#include "probe/photo.h"

#include <string_view>

#include "media/pixel_formats.h"
#include "read/ffmpeg/input.h"
#include "read/headers/picture.h"
#include "read/headers/shortcuts.h"

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
  const auto fromHeader =
      headers::mayTakeShortcuts() ? headers::readPicture(*source) : std::nullopt;
  if (fromHeader) return photo(fromHeader->width, fromHeader->height, fromHeader->pixelFormat);
  const auto input = ffmpeg::Input::open(*source, ffmpeg::Depth::kStreams);
  if (!input) return {};
  const media::Stream* picture = input->container().first(media::StreamType::kVideo);
  if (picture == nullptr) return {.isReadable = true, .picture = {}};
  return photo(picture->width, picture->height, picture->pixelFormat);
}

}  // namespace kolum::probe
