// The tags of photos. As Exiv2, with which those of Exif and IPTC are read, is under the GNU
// General Public License, only the isolated worker is linked with this layer.
#ifndef KOLUM_READ_EXIF_PHOTO_TAGS_H
#define KOLUM_READ_EXIF_PHOTO_TAGS_H

#include <optional>

#include "media/photo_tags.h"
#include "media/source.h"

namespace kolum::exif {

// Empty if the file is no photo of a kind that may have tags. Throws std::bad_alloc.
std::optional<media::PhotoTags> readPhotoTags(const media::Source& source);

}  // namespace kolum::exif

#endif
