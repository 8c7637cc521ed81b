#include <kolum/photo.h>

#include "av/input.h"
#include "media/pixel_formats.h"
#include "support/text.h"

using namespace kolum;

unsigned int GetPhotoMetadata(const char* folder, const char* fileName, uint32_t* pixelFormat) try {
  if (pixelFormat == nullptr) return 1;
  // Callers recognise a file without a picture by this value.
  *pixelFormat = static_cast<uint32_t>(media::kUnknownPixelFormat);
  if (folder == nullptr || fileName == nullptr) return 1;
  const auto path = wholePath(folder, fileName);
  const auto input = path ? av::Input::openWithStreams(path->c_str()) : std::nullopt;
  if (!input) return 1;
  if (const av::Stream* picture = input->firstStream(av::MediaType::kVideo))
    *pixelFormat = static_cast<uint32_t>(media::classicPixelFormat(picture->pixelFormatName()));
  return 0;
} catch (...) {
  return 1;
}

unsigned int GetPhotoHW(const char* path, uint32_t* width, uint32_t* height) try {
  if (path == nullptr || width == nullptr || height == nullptr) return 1;
  const auto input = av::Input::openWithStreams(path);
  if (!input) return 1;
  if (const av::Stream* picture = input->firstStream(av::MediaType::kVideo)) {
    *width = static_cast<uint32_t>(picture->width());
    *height = static_cast<uint32_t>(picture->height());
  }
  return 0;
} catch (...) {
  return 1;
}
