// What an XMP packet says, as far as it is of use for the tags of photos.
#ifndef KOLUM_READ_EXIF_XMP_H
#define KOLUM_READ_EXIF_XMP_H

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kolum::exif {

// The properties that are read, and the fields of those that are structures. xmp_names.cpp says
// which namespace and name each has, and what it is a field of.
enum class XmpProperty {
  kTitle,
  kDescription,
  kSubject,
  kCreator,
  kRights,

  kCreateDate,
  kModifyDate,
  kCreatorTool,
  kRating,
  kLabel,

  kDateCreated,
  kHeadline,
  kCredit,
  kCity,
  kState,
  kCountry,

  kDateTimeOriginal,
  kDateTimeDigitized,
  kLatitude,
  kLongitude,

  kDateTime,
  kMake,
  kModel,
  kOrientation,

  kLens,
  kSerialNumber,

  kLocation,
  kCountryCode,

  kLocationCreated,
  kCreatedSublocation,
  kCreatedCity,
  kCreatedState,
  kCreatedCountry,
  kCreatedCountryCode,
  kLocationShown,
  kShownSublocation,
  kShownCity,
  kShownState,
  kShownCountry,
  kShownCountryCode,

  kHierarchicalSubject,
  kTagsList,
  kLastKeyword,

  // People and things as the Metadata Working Group has them, ...
  kRegions,
  kRegionList,
  kRegionName,
  kRegionType,
  kRegionArea,
  kAreaX,
  kAreaY,
  kAreaWidth,
  kAreaHeight,
  kAreaDiameter,
  kAreaUnit,
  // ... and as Microsoft has them.
  kPeople,
  kPeopleList,
  kPersonName,
  kPersonRectangle,

  kBurst,
  kMicroVideoOffset,
  kDirectory,
  kDirectoryItem,
  kItemSemantic,
  kItemLength,

  kExtendedXmp,

  kNone,  // the packet itself
};

inline constexpr std::size_t kXmpProperties = static_cast<std::size_t>(XmpProperty::kNone);

// Where a value is: elements of lists count from 1, and what is in no list has the number 0. Of
// lists in lists, the outermost counts.
struct XmpPlace {
  XmpProperty property = XmpProperty::kNone;
  unsigned item = 0;
  bool isDefault = false;  // of a text in several languages, the one for everybody
};

class Xmp {
 public:
  // The first text, or the one for everybody; empty if there is none.
  std::string text(XmpProperty property) const;
  // The same of one element of a list.
  std::string text(XmpProperty property, unsigned item) const;
  std::vector<std::string> texts(XmpProperty property) const;
  // How many elements a list has.
  unsigned items(XmpProperty list) const { return items_[indexOf(list)]; }

  // Blank texts count as none. Long ones are cut.
  void add(const XmpPlace& place, std::string_view text);
  void countItems(XmpProperty list, unsigned items);
  // Takes those properties of OTHER, each as a whole, that are not here.
  void complete(Xmp other);

 private:
  struct Value {
    std::string text;
    unsigned item;
    bool isDefault;
  };

  static std::size_t indexOf(XmpProperty property) { return static_cast<std::size_t>(property); }
  bool has(std::size_t property) const;

  std::array<std::vector<Value>, kXmpProperties> values_;
  std::array<unsigned, kXmpProperties> items_ = {};
};

// Empty unless PACKET holds a whole document that is worth reading: not one with a document type,
// which could define entities, and not one that is deeper or has more of these properties than any
// program writes. Throws std::bad_alloc.
Xmp readXmp(std::string_view packet);

}  // namespace kolum::exif

#endif
