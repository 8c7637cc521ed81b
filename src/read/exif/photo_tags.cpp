#include "read/exif/photo_tags.h"

#include "read/exif/blocks.h"
#include "read/exif/metadata.h"
#include "read/exif/readers.h"
#include "read/exif/times.h"

namespace kolum::exif {

std::optional<media::PhotoTags> readPhotoTags(const media::Source& source) {
  const auto blocks = findBlocks(source);
  if (!blocks) return std::nullopt;
  const Metadata metadata(*blocks);
  media::PhotoTags tags;
  readTimes(metadata, tags);
  readCamera(metadata, tags);
  readExposure(metadata, tags);
  readPicture(metadata, *blocks, tags);
  readPlace(metadata, tags);
  readWords(metadata, tags);
  readRegions(metadata, tags);
  readCompanions(metadata, tags);
  return tags;
}

}  // namespace kolum::exif
