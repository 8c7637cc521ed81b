// What a photo says about itself: when, where and with what it was taken, and what people have
// written into it.
//
// Where several places of a file state the same, the Metadata Working Group's guidance decides:
// - Exif comes before XMP, and XMP before IPTC, for what Exif knows: dates, description, creators,
//   copyright. A text of spaces only counts as absent.
// - XMP comes before IPTC for everything else (title, credit, places).
// - Keywords are all that XMP (dc:subject), IPTC and Windows list, in this order and each once: a
//   program that changes one list of them leaves the others behind.
// The guidance also lets IPTC come before XMP when a checksum shows that a program has changed only
// IPTC; that is not done, because such programs are gone.
//
// Texts are UTF-8 without NUL, of 64 KiB at most. Lists have 256 elements and 256 KiB at most. An
// empty text, list or optional is unknown, and so is what makes no sense, such as a latitude of
// 200.
#ifndef KOLUM_MEDIA_PHOTO_TAGS_H
#define KOLUM_MEDIA_PHOTO_TAGS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "media/rational.h"

namespace kolum::media {

inline constexpr std::size_t kLongestPhotoText = 65536;
inline constexpr std::size_t kMostPhotoTexts = 256;
inline constexpr std::size_t kLongestPhotoList = 262144;  // bytes of all its texts

// Where the offset of a time of day from UTC comes from.
enum class OffsetOrigin {
  kNone,    // it is unknown
  kStated,  // Exif's offset of this very time (OffsetTimeOriginal, ...), or the text itself (XMP)
  kOtherTime,  // Exif's offset of another time of this photo (OffsetTime)
  kMakerNote,  // the camera's clock settings
  kGps,        // the difference from GPS time, which is UTC
};

// As the camera's clock or the user has it, not converted.
struct PhotoTime {
  int year = 0;   // 1 to 9999
  int month = 0;  // 1 to 12; 0: only the year is known
  int day = 0;    // 1 to 31; 0: only year and month are known
  bool hasTimeOfDay = false;
  int hour = 0;
  int minute = 0;
  int second = 0;
  std::string subSecond = {};      // digits after the point ("05" is 0.05 s), 9 at most
  std::optional<int> offset = {};  // minutes east of UTC
  OffsetOrigin offsetOrigin = OffsetOrigin::kNone;
  bool operator==(const PhotoTime&) const = default;
};

enum class ExposureProgram {
  kManual,
  kNormal,
  kAperturePriority,
  kShutterPriority,
  kCreative,
  kAction,
  kPortrait,
  kLandscape,
};

enum class Metering { kAverage, kCentreWeighted, kSpot, kMultiSpot, kPattern, kPartial, kOther };

enum class WhiteBalance { kAutomatic, kManual };

struct Flash {
  bool hasFired = false;
  int value = 0;  // all that Exif says of it: bit field, 0 to 65535
};

// How to turn the stored picture for viewing.
struct Orientation {
  int value = 1;            // Exif's number, 1 to 8
  int degrees = 0;          // clockwise: 0, 90, 180 or 270
  bool isMirrored = false;  // left to right, before it is turned
};

struct PhotoSize {
  int width = 0;
  int height = 0;
};

struct Position {
  double latitude = 0;   // degrees, north positive
  double longitude = 0;  // degrees, east positive
};

enum class North { kUnknown, kTrue, kMagnetic };

struct Direction {
  double degrees = 0;  // clockwise from north, 0 to 360
  North north = North::kUnknown;
};

// Parts of the stored picture's width and height, from its upper left corner. As the file has them:
// programs do not agree whether such places change when a picture is turned.
struct Area {
  double centreX = 0;
  double centreY = 0;
  double width = 0;
  double height = 0;
};

struct Region {
  std::string name;
  std::string type;  // "Face", "Pet", "Focus", "BarCode", or what the file says
  std::optional<Area> area;
};

struct PhotoTags {
  // --- When
  std::optional<PhotoTime> taken;
  std::optional<PhotoTime> digitized;
  std::optional<PhotoTime> modified;

  // --- With what
  std::string make;
  std::string model;  // without the make in front
  std::string lensMake;
  std::string lensModel;
  std::string serial;
  std::string lensSerial;
  std::string software;

  // --- How
  std::optional<Rational> exposureTime;  // seconds, as stored; above 0
  std::optional<double> aperture;        // the f-number
  std::optional<int> iso;                // above 0
  std::optional<double> exposureBias;    // EV
  std::optional<ExposureProgram> program;
  std::optional<Metering> metering;
  std::optional<WhiteBalance> whiteBalance;
  std::optional<double> focalLength;    // mm
  std::optional<double> focalLength35;  // mm, for the same view on 36 x 24 mm film
  std::optional<Flash> flash;

  // --- The picture
  // Of HEIF, AVIF and JPEG XL what the container asks for: it counts there, not Exif.
  std::optional<Orientation> orientation;
  // Of the full picture as it is stored, not of a thumbnail: for camera RAW what the camera
  // delivers of it, without the borders of its sensor. Empty if only the picture's own header says
  // it.
  std::optional<PhotoSize> storedSize;
  // The same as it is to be viewed: with width and height exchanged if the orientation says so.
  std::optional<PhotoSize> shownSize;
  // A description ("Display P3"); "sRGB" or "Adobe RGB" if only Exif names one of these.
  std::string colourProfile;

  // --- Where
  std::optional<Position> position;
  std::optional<double> altitude;          // m above the sea, negative below
  std::optional<Direction> direction;      // of view
  std::optional<double> positionAccuracy;  // m
  std::optional<PhotoTime> gpsTime;        // UTC; offset 0
  std::string location;                    // a part of a city, or a place outside of cities
  std::string city;
  std::string state;  // or province
  std::string country;
  std::string countryCode;

  // --- Words
  std::string title;
  std::string headline;
  std::string description;
  std::vector<std::string> keywords;
  std::vector<std::string> keywordPaths;  // from the general to the special: "Places|Alps|Eiger"
  std::optional<int> rating;              // 0 to 5; -1 is rejected
  std::string label;
  std::vector<std::string> creators;
  std::string copyright;
  std::string credit;
  std::vector<Region> regions;  // people and other things in the picture

  // --- What belongs to it
  std::string burst;      // equal in all photos of a burst
  std::string livePhoto;  // equal in a live photo's picture and its film
  // Bytes from the end of the file to the beginning of a film inside it.
  std::optional<std::int64_t> motionPhoto;
};

// Whether everything is within the limits that the comments above state.
bool isValid(const PhotoTags& tags);

}  // namespace kolum::media

#endif
