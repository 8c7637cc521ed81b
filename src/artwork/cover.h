// Album pictures that lie beside the songs.
#ifndef KOLUM_ARTWORK_COVER_H
#define KOLUM_ARTWORK_COVER_H

#include <optional>
#include <string>
#include <string_view>

namespace kolum::artwork {

// The album picture in a folder; empty when there is none. FOLDER closes with "/".
std::optional<std::string> coverIn(std::string_view folder);

// Whether a picture's name marks it as an album picture. A prefix is enough: "cover.jpg.bak" is no
// photo to show either.
bool isCoverName(std::string_view fileName);

}  // namespace kolum::artwork

#endif
