#include <kolum/audio.h>
#include <kolum/photo.h>

#include <cstdint>

#include "file_types.h"
#include "identifiers.h"
#include "media_files.h"
#include "probe.h"
#include "text.h"

namespace kolum::tool {

namespace {

constexpr std::uint32_t kNoPicture = UINT32_MAX;

}  // namespace

void probePhoto(Context& context, const MediaPath& path, const ProbeOptions&) {
  std::uint32_t pixelFormat = kNoPicture;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  if (GetPhotoMetadata(path.folder.c_str(), path.name.c_str(), &pixelFormat) != 0 ||
      GetPhotoHW(path.full().c_str(), &width, &height) != 0 || pixelFormat == kNoPicture) {
    return context.fail(path.given, refusalReason(path, "no picture that can be read"));
  }
  Result result = Result::ofFile(path.given);
  addKind(result, kPhoto);
  if (const MediaFileInfo* type = addMimeTypeOfName(result, path.name, kPhotoBit)) {
    result.data("pictureFormat", type->formatIds);
  }
  result.known("width", width);
  result.known("height", height);
  result.show("Picture", pictureSizeText(width, height));
  result.data("pixelFormat", pixelFormat);
  const bool isCover = KoLUM_CheckSpecialCover(path.name.c_str()) == 0;
  result.data("isAlbumCover", isCover);
  if (isCover) result.show("Album cover", "yes, by its name");
  context.printer.block(result);
}

}  // namespace kolum::tool
