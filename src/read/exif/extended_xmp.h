// XMP that is too long for one segment of a JPEG file, and stands in further ones.
#ifndef KOLUM_READ_EXIF_EXTENDED_XMP_H
#define KOLUM_READ_EXIF_EXTENDED_XMP_H

#include <string>
#include <string_view>
#include <vector>

#include "read/exif/blocks.h"

namespace kolum::exif {

// The parts with that GUID, which the first packet names, as one packet. They may be in any order.
// Empty unless they are all there and each byte once, and no more than any block has.
std::string joinedXmp(const std::vector<XmpPart>& parts, std::string_view guid);

// Whether a packet in UTF-8, as these have to be, names a namespace of properties that are of use.
// Most have nothing but maps of depth, of megabytes, which need not be parsed then.
bool mayHaveProperties(std::string_view packet);

}  // namespace kolum::exif

#endif
