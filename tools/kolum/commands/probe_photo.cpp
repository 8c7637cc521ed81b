#include <kolum/audio.h>

#include "commands/probe.h"
#include "files/content.h"
#include "files/diagnosis.h"
#include "files/file_types.h"
#include "files/identifiers.h"
#include "files/media_files.h"
#include "media/pixel_formats.h"
#include "terminal/text.h"

namespace kolum::tool {

Description describePhoto(const MediaPath& path, const ProbeOptions&) {
  const auto picture = pictureOf(path.full());
  if (!picture) return diagnose(path, Wanted::kPicture);
  Result result = Result::ofFile(path.given);
  addKind(result, MEDIA_KIND_PHOTO);
  if (const MediaFileInfo* type = addMimeTypeOfName(result, path.name, MEDIA_KIND_BIT_PHOTO)) {
    result.data("pictureFormat", type->formatIds);
  }
  result.known("width", picture->width);
  result.known("height", picture->height);
  result.show("Picture", pictureSizeText(picture->width, picture->height));
  const int pixelFormat = media::classicPixelFormat(picture->pixelFormat);
  if (pixelFormat != media::kUnknownPixelFormat) result.data("pixelFormat", pixelFormat);
  result.data("pixelFormatName", picture->pixelFormat);
  const bool isCover = KoLUM_CheckSpecialCover(path.name.c_str()) == 0;
  result.data("isAlbumCover", isCover);
  if (isCover) result.show("Album cover", "yes, by its name");
  return result;
}

}  // namespace kolum::tool
