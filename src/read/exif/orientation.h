// The eight ways to turn a picture.
#ifndef KOLUM_READ_EXIF_ORIENTATION_H
#define KOLUM_READ_EXIF_ORIENTATION_H

#include <optional>

#include "media/photo_tags.h"

namespace kolum::exif {

// Empty unless NUMBER is one of Exif's.
std::optional<media::Orientation> orientationOf(std::int64_t number);

// Of a picture that is mirrored, if at all, and then turned clockwise by DEGREES, a multiple of 90.
media::Orientation orientationOf(bool isMirrored, int degrees);

media::PhotoSize turned(const media::PhotoSize& size, const media::Orientation& orientation);

}  // namespace kolum::exif

#endif
