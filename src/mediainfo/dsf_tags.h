// The text tags of a DSF file, read with TagLib.
#ifndef KOLUM_MEDIAINFO_DSF_TAGS_H
#define KOLUM_MEDIAINFO_DSF_TAGS_H

#include <string>

namespace kolum::mediainfo {

// In UTF-8. Fields stay empty that the file does not have, or has in Latin-1: in that encoding most
// files hold something else, which FFmpeg's reading of the tag is left to make the best of.
struct DsfTags {
  std::string title;
  std::string artist;
  std::string albumArtist;
  std::string album;
};

// All empty when the file cannot be read or has no tag.
DsfTags readDsfTags(const std::string& path);

}  // namespace kolum::mediainfo

#endif
