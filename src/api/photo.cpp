#include <kolum/photo.h>

#include "api/guarded.h"
#include "base/text.h"
#include "media/pixel_formats.h"
#include "probe/photo.h"

using namespace kolum;

unsigned int GetPhotoMetadata(const char* folder, const char* fileName, uint32_t* pixelFormat) {
  return api::guarded(1U, [&] {
    if (pixelFormat == nullptr) return 1U;
    // Callers recognise a file without a picture by this value.
    *pixelFormat = static_cast<uint32_t>(media::kUnknownPixelFormat);
    if (folder == nullptr || fileName == nullptr) return 1U;
    const auto path = wholePath(folder, fileName);
    const auto photo = path ? probe::probePhoto(*path) : probe::PhotoResult{};
    if (photo.picture) *pixelFormat = static_cast<uint32_t>(photo.picture->pixelFormat);
    return photo.isReadable ? 0U : 1U;
  });
}

unsigned int GetPhotoHW(const char* path, uint32_t* width, uint32_t* height) {
  return api::guarded(1U, [&] {
    if (path == nullptr || width == nullptr || height == nullptr) return 1U;
    const auto photo = probe::probePhoto(path);
    if (photo.picture) {
      *width = static_cast<uint32_t>(photo.picture->width);
      *height = static_cast<uint32_t>(photo.picture->height);
    }
    return photo.isReadable ? 0U : 1U;
  });
}
