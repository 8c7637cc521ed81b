// The names that properties have in XMP packets.
#ifndef KOLUM_READ_EXIF_XMP_NAMES_H
#define KOLUM_READ_EXIF_XMP_NAMES_H

#include <string_view>

#include "read/exif/xmp.h"

namespace kolum::exif {

enum class XmpNamespace {
  kUnknown,
  kRdf,
  kDublinCore,
  kXmp,
  kPhotoshop,
  kExif,
  kTiff,
  kLens,
  kIptcCore,
  kIptcExtension,
  kLightroom,
  kDigiKam,
  kMicrosoft,
  kRegions,
  kArea,
  kPeople,
  kPeopleList,
  kPerson,
  kCamera,
  kContainer,
  kItem,
  kNote,
};

// Whatever prefix a document gives it. A slash at the end does not matter: some programs forget it.
XmpNamespace namespaceOf(std::string_view uri);

// The property or field of that name in PARENT; kNone if it is of no use.
XmpProperty propertyIn(XmpProperty parent, XmpNamespace space, std::string_view name);

// What a field belongs to; kNone for properties.
XmpProperty parentOf(XmpProperty field);

}  // namespace kolum::exif

#endif
