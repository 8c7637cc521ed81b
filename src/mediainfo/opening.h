// Opening songs and photos: the path behind a folder and a name, its input, the stream that counts.
#ifndef KOLUM_MEDIAINFO_OPENING_H
#define KOLUM_MEDIAINFO_OPENING_H

#include <optional>
#include <string>
#include <string_view>

#include "av/input.h"

namespace kolum::mediainfo {

// FOLDER followed by NAME; empty when that is too long for a path buffer, as a cut path would name
// another file.
std::optional<std::string> wholePath(std::string_view folder, std::string_view name);

// An existing file, opened and with its stream information read; empty when either is not to be
// had.
std::optional<av::Input> openMedia(const std::string& path);

// The first stream of a type in stream order; null when there is none.
const av::Stream* firstStream(const av::Input& input, av::MediaType type);

}  // namespace kolum::mediainfo

#endif
