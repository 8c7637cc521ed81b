// Album pictures stored beside the songs.
#ifndef KOLUM_ARTWORK_COVER_H
#define KOLUM_ARTWORK_COVER_H

#include <optional>
#include <string>
#include <string_view>

namespace kolum::artwork {

// The album picture in a folder; empty if there is none. FOLDER ends with "/".
std::optional<std::string> coverIn(std::string_view folder);

// Whether a picture's name marks it as an album picture. A prefix is enough: "cover.jpg.bak" is not
// a photo to show either.
bool isCoverName(std::string_view fileName);

}  // namespace kolum::artwork

#endif
