// The text tags of a DSF file, read with TagLib.
#ifndef KOLUM_READ_TAGS_DSF_TAGS_H
#define KOLUM_READ_TAGS_DSF_TAGS_H

#include <string>

#include "media/source.h"

namespace kolum::tags {

// In UTF-8. A field is empty if the file does not have it or has it in Latin-1: most files hold
// something else under that encoding, so FFmpeg's reading of the tag is used for such fields.
struct DsfTags {
  std::string title;
  std::string artist;
  std::string albumArtist;
  std::string album;
};

// All empty if the file has no tag.
DsfTags readDsfTags(const media::Source& source);

}  // namespace kolum::tags

#endif
