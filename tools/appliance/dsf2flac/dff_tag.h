// The ID3v2 tag in a chunk of a DFF file.
#ifndef KOLUM_DSF2FLAC_DFF_TAG_H
#define KOLUM_DSF2FLAC_DFF_TAG_H

#include <string>

namespace kolum::dsf2flac {

struct DffTag {
  std::string title;  // texts in UTF-8
  std::string artist;
  std::string album;
  int year = 0;  // 0 if unknown
  int track = 0;
};

// Empty if the file is not a DFF file or has no such chunk.
DffTag readDffTag(const std::string& path);

}  // namespace kolum::dsf2flac

#endif
