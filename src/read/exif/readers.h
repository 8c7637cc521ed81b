// Each fills the part of the tags that it is about.
#ifndef KOLUM_READ_EXIF_READERS_H
#define KOLUM_READ_EXIF_READERS_H

#include "media/photo_tags.h"
#include "read/exif/blocks.h"
#include "read/exif/metadata.h"

namespace kolum::exif {

void readCamera(const Metadata& metadata, media::PhotoTags& tags);
void readExposure(const Metadata& metadata, media::PhotoTags& tags);
void readPicture(const Metadata& metadata, const Blocks& blocks, media::PhotoTags& tags);
void readPlace(const Metadata& metadata, media::PhotoTags& tags);
void readWords(const Metadata& metadata, media::PhotoTags& tags);
void readRegions(const Metadata& metadata, media::PhotoTags& tags);
void readCompanions(const Metadata& metadata, media::PhotoTags& tags);

}  // namespace kolum::exif

#endif
