#include "artwork/cover.h"
#include "describe/parts.h"
#include "describe/table.h"
#include "media/pixel_formats.h"

namespace kolum::describe {

namespace {

constexpr auto kPhotoRows = std::to_array<Row<Document>>({
    {{"pictureFormat", Type::kInteger, Unit::kNone, "What a photo's extension implies", "the name"},
     [](const Document& d) { return d.type != nullptr ? Json(d.type->formatIds) : Json(); }},
    {{"width", Type::kInteger, Unit::kPixels, "As stored", "the picture"},
     [](const Document& d) { return positive(d.photo->width); }},
    {{"height", Type::kInteger, Unit::kPixels, "As stored", "the picture"},
     [](const Document& d) { return positive(d.photo->height); }},
    {{"pixelFormat", Type::kInteger, Unit::kNone,
      "The pixel format's number in FFmpeg 57, whatever release is linked; left out for a later "
      "format",
      "the picture"},
     [](const Document& d) -> Json {
       if (d.photo->pixelFormat == media::kUnknownPixelFormat) return nullptr;
       return d.photo->pixelFormat;
     }},
    {{"pixelFormatName", Type::kText, Unit::kNone,
      "FFmpeg's name of the pixel format, such as \"yuv420p\"", "the picture"},
     [](const Document& d) -> Json { return d.photo->pixelFormatName; }},
    {{"isAlbumCover", Type::kBoolean, Unit::kNone,
      "Whether a photo's name is that of an album picture", "the name"},
     [](const Document& d) -> Json { return artwork::isCoverName(d.path.name); }},
});

constexpr auto kPhotoKeys = keysOf(kPhotoRows);

}  // namespace

Part photoPart() {
  return {{"photo", "Photos", kPhotoKeys}, [](Json& object, const Document& document) {
            if (document.photo) add(object, kPhotoRows, document);
          }};
}

}  // namespace kolum::describe
