// Whether an XMP document is one that its parser may be given.
#ifndef KOLUM_READ_EXIF_XMP_CHECK_H
#define KOLUM_READ_EXIF_XMP_CHECK_H

#include <string_view>

namespace kolum::exif {

// The parser goes down a level of elements with a call of itself, takes a hundred times the memory
// of the text, and expands entities. Real documents have a dozen levels and no entities of their
// own.
bool isHarmlessXmp(std::string_view text);

}  // namespace kolum::exif

#endif
