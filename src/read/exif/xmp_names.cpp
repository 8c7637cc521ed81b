#include "read/exif/xmp_names.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace kolum::exif {

namespace {

struct NamespaceRow {
  std::string_view uri;  // without a slash at its end
  XmpNamespace space;
};

using enum XmpNamespace;

constexpr NamespaceRow kNamespaces[] = {
    {"http://www.w3.org/1999/02/22-rdf-syntax-ns#", kRdf},
    {"http://purl.org/dc/elements/1.1", kDublinCore},
    {"http://purl.org/dc/1.1", kDublinCore},  // of early programs
    {"http://ns.adobe.com/xap/1.0", kXmp},
    {"http://ns.adobe.com/photoshop/1.0", kPhotoshop},
    {"http://ns.adobe.com/exif/1.0", kExif},
    {"http://ns.adobe.com/tiff/1.0", kTiff},
    {"http://ns.adobe.com/exif/1.0/aux", kLens},
    {"http://iptc.org/std/Iptc4xmpCore/1.0/xmlns", kIptcCore},
    {"http://iptc.org/std/Iptc4xmpExt/2008-02-29", kIptcExtension},
    {"http://ns.adobe.com/lightroom/1.0", kLightroom},
    {"http://www.digikam.org/ns/1.0", kDigiKam},
    {"http://ns.microsoft.com/photo/1.0", kMicrosoft},
    {"http://www.metadataworkinggroup.com/schemas/regions", kRegions},
    {"http://ns.adobe.com/xmp/sType/Area#", kArea},
    {"http://ns.microsoft.com/photo/1.2", kPeople},
    {"http://ns.microsoft.com/photo/1.2/t/RegionInfo#", kPeopleList},
    {"http://ns.microsoft.com/photo/1.2/t/Region#", kPerson},
    {"http://ns.google.com/photos/1.0/camera", kCamera},
    {"http://ns.google.com/photos/1.0/container", kContainer},
    {"http://ns.google.com/photos/1.0/container/item", kItem},
    {"http://ns.adobe.com/xmp/note", kNote},
};

struct PropertyRow {
  XmpProperty property;
  XmpProperty parent;
  XmpNamespace space;
  std::string_view name;
};

using P = XmpProperty;

constexpr PropertyRow kRows[] = {
    {P::kTitle, P::kNone, kDublinCore, "title"},
    {P::kDescription, P::kNone, kDublinCore, "description"},
    {P::kSubject, P::kNone, kDublinCore, "subject"},
    {P::kCreator, P::kNone, kDublinCore, "creator"},
    {P::kRights, P::kNone, kDublinCore, "rights"},

    {P::kCreateDate, P::kNone, kXmp, "CreateDate"},
    {P::kModifyDate, P::kNone, kXmp, "ModifyDate"},
    {P::kCreatorTool, P::kNone, kXmp, "CreatorTool"},
    {P::kRating, P::kNone, kXmp, "Rating"},
    {P::kLabel, P::kNone, kXmp, "Label"},

    {P::kDateCreated, P::kNone, kPhotoshop, "DateCreated"},
    {P::kHeadline, P::kNone, kPhotoshop, "Headline"},
    {P::kCredit, P::kNone, kPhotoshop, "Credit"},
    {P::kCity, P::kNone, kPhotoshop, "City"},
    {P::kState, P::kNone, kPhotoshop, "State"},
    {P::kCountry, P::kNone, kPhotoshop, "Country"},

    {P::kDateTimeOriginal, P::kNone, kExif, "DateTimeOriginal"},
    {P::kDateTimeDigitized, P::kNone, kExif, "DateTimeDigitized"},
    {P::kLatitude, P::kNone, kExif, "GPSLatitude"},
    {P::kLongitude, P::kNone, kExif, "GPSLongitude"},

    {P::kDateTime, P::kNone, kTiff, "DateTime"},
    {P::kMake, P::kNone, kTiff, "Make"},
    {P::kModel, P::kNone, kTiff, "Model"},
    {P::kOrientation, P::kNone, kTiff, "Orientation"},

    {P::kLens, P::kNone, kLens, "Lens"},
    {P::kSerialNumber, P::kNone, kLens, "SerialNumber"},

    {P::kLocation, P::kNone, kIptcCore, "Location"},
    {P::kCountryCode, P::kNone, kIptcCore, "CountryCode"},

    {P::kLocationCreated, P::kNone, kIptcExtension, "LocationCreated"},
    {P::kCreatedSublocation, P::kLocationCreated, kIptcExtension, "Sublocation"},
    {P::kCreatedCity, P::kLocationCreated, kIptcExtension, "City"},
    {P::kCreatedState, P::kLocationCreated, kIptcExtension, "ProvinceState"},
    {P::kCreatedCountry, P::kLocationCreated, kIptcExtension, "CountryName"},
    {P::kCreatedCountryCode, P::kLocationCreated, kIptcExtension, "CountryCode"},
    {P::kLocationShown, P::kNone, kIptcExtension, "LocationShown"},
    {P::kShownSublocation, P::kLocationShown, kIptcExtension, "Sublocation"},
    {P::kShownCity, P::kLocationShown, kIptcExtension, "City"},
    {P::kShownState, P::kLocationShown, kIptcExtension, "ProvinceState"},
    {P::kShownCountry, P::kLocationShown, kIptcExtension, "CountryName"},
    {P::kShownCountryCode, P::kLocationShown, kIptcExtension, "CountryCode"},

    {P::kHierarchicalSubject, P::kNone, kLightroom, "hierarchicalSubject"},
    {P::kTagsList, P::kNone, kDigiKam, "TagsList"},
    {P::kLastKeyword, P::kNone, kMicrosoft, "LastKeywordXMP"},

    {P::kRegions, P::kNone, kRegions, "Regions"},
    {P::kRegionList, P::kRegions, kRegions, "RegionList"},
    {P::kRegionName, P::kRegionList, kRegions, "Name"},
    {P::kRegionType, P::kRegionList, kRegions, "Type"},
    {P::kRegionArea, P::kRegionList, kRegions, "Area"},
    {P::kAreaX, P::kRegionArea, kArea, "x"},
    {P::kAreaY, P::kRegionArea, kArea, "y"},
    {P::kAreaWidth, P::kRegionArea, kArea, "w"},
    {P::kAreaHeight, P::kRegionArea, kArea, "h"},
    {P::kAreaDiameter, P::kRegionArea, kArea, "d"},
    {P::kAreaUnit, P::kRegionArea, kArea, "unit"},
    {P::kPeople, P::kNone, kPeople, "RegionInfo"},
    {P::kPeopleList, P::kPeople, kPeopleList, "Regions"},
    {P::kPersonName, P::kPeopleList, kPerson, "PersonDisplayName"},
    {P::kPersonRectangle, P::kPeopleList, kPerson, "Rectangle"},

    {P::kBurst, P::kNone, kCamera, "BurstID"},
    {P::kMicroVideoOffset, P::kNone, kCamera, "MicroVideoOffset"},
    {P::kDirectory, P::kNone, kContainer, "Directory"},
    {P::kDirectoryItem, P::kDirectory, kContainer, "Item"},
    {P::kItemSemantic, P::kDirectoryItem, kItem, "Semantic"},
    {P::kItemLength, P::kDirectoryItem, kItem, "Length"},

    {P::kExtendedXmp, P::kNone, kNote, "HasExtendedXMP"},
};

constexpr bool areInOrder() {
  for (std::size_t i = 0; i < std::size(kRows); ++i)
    if (static_cast<std::size_t>(kRows[i].property) != i) return false;
  return true;
}
static_assert(std::size(kRows) == kXmpProperties && areInOrder());

}  // namespace

XmpNamespace namespaceOf(std::string_view uri) {
  if (uri.ends_with('/')) uri.remove_suffix(1);
  const auto* row = std::ranges::find(kNamespaces, uri, &NamespaceRow::uri);
  return row != std::end(kNamespaces) ? row->space : kUnknown;
}

XmpProperty propertyIn(XmpProperty parent, XmpNamespace space, std::string_view name) {
  const auto* row = std::ranges::find_if(kRows, [&](const PropertyRow& candidate) {
    return candidate.space == space && candidate.parent == parent && candidate.name == name;
  });
  return row != std::end(kRows) ? row->property : P::kNone;
}

XmpProperty parentOf(XmpProperty field) {
  return kRows[static_cast<std::size_t>(field)].parent;
}

}  // namespace kolum::exif
