// Makes an XMP document one that its parser may be given.
#ifndef KOLUM_READ_EXIF_XMP_CHECK_H
#define KOLUM_READ_EXIF_XMP_CHECK_H

#include <string>
#include <string_view>

namespace kolum::exif {

// TEXT without what nobody asks for and what makes documents large: the history of the file and the
// settings of raw converters. Empty if it is still no document for the parser, which goes down a
// level of elements with a call of itself, takes a hundred times the memory of the text and the
// square of the time, and expands entities. Real documents have a dozen levels, some hundred
// elements and no entities of their own.
std::string harmlessXmp(std::string_view text);

}  // namespace kolum::exif

#endif
