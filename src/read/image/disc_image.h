// Images of discs, read without mounting them.
#ifndef KOLUM_READ_IMAGE_DISC_IMAGE_H
#define KOLUM_READ_IMAGE_DISC_IMAGE_H

#include <optional>

#include "media/disc.h"
#include "media/source.h"

namespace kolum::image {

// What the index files in an image with the file system UDF say, which DVDs and Blu-ray discs have.
// Empty if there is none, or no disc in it. For workers only: a damaged file system may do
// anything.
std::optional<media::DiscIndex> readDiscImage(const media::Source& source);

}  // namespace kolum::image

#endif
