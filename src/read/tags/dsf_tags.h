// The text tags of a DSF file, read with TagLib.
#ifndef KOLUM_READ_TAGS_DSF_TAGS_H
#define KOLUM_READ_TAGS_DSF_TAGS_H

#include <string>

#include "media/source.h"

namespace kolum::tags {

// In UTF-8. Fields stay empty that the file does not have, or has in Latin-1: in that encoding most
// files hold something else, which FFmpeg's reading of the tag is left to make the best of.
struct DsfTags {
  std::string title;
  std::string artist;
  std::string albumArtist;
  std::string album;
};

// All empty when the file has no tag.
DsfTags readDsfTags(const media::Source& source);

}  // namespace kolum::tags

#endif
