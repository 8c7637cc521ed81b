// What a document about a video says of each stream beyond what every probe needs. Plain values;
// an empty optional, an empty text or an empty list means unknown or not stated. Texts are UTF-8
// without NUL, of kLongestText bytes at most (base/clean_text.h).
#ifndef KOLUM_MEDIA_STREAM_DETAILS_H
#define KOLUM_MEDIA_STREAM_DETAILS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "media/rational.h"

namespace kolum::media {

// Marks that a container gives its streams. False also means "does not say".
struct Dispositions {
  bool isDefault = false;
  bool isForced = false;
  bool isForHearingImpaired = false;
  bool isForVisuallyImpaired = false;
  bool isComment = false;
  bool isOriginal = false;  // in the original language
  bool isDub = false;
  bool isLyrics = false;
  bool isKaraoke = false;
  bool isCleanEffects = false;  // without voices
  bool isCaptions = false;
  bool isDescriptions = false;
  bool isAttachedPicture = false;
  bool isTimedThumbnails = false;
  bool isStillImage = false;
  bool operator==(const Dispositions&) const = default;
};

// The order in which the two fields of a picture are stored, and in which they are shown.
enum class FieldOrder {
  kProgressive,
  kTopFirst,              // stored and shown top field first
  kBottomFirst,           // stored and shown bottom field first
  kTopStoredBottomShown,  // stored top field first, shown bottom field first
  kBottomStoredTopShown,
};

// Colours by FFmpeg's names, which stay the same across its releases: "bt2020", "smpte2084",
// "bt2020nc", "tv" (limited range) or "pc" (full), "left".
struct Colours {
  std::string primaries;
  std::string transfer;
  std::string matrix;
  std::string range;
  std::string chromaLocation;
  bool operator==(const Colours&) const = default;
};

// A colour as CIE 1931 coordinates, 0 to 1.
struct Chromaticity {
  double x = 0;
  double y = 0;
  bool operator==(const Chromaticity&) const = default;
};

struct DisplayPrimaries {
  Chromaticity red;
  Chromaticity green;
  Chromaticity blue;
  Chromaticity white;
  bool operator==(const DisplayPrimaries&) const = default;
};

// In candelas per square metre.
struct DisplayLuminance {
  double lowest = 0;
  double highest = 0;
  bool operator==(const DisplayLuminance&) const = default;
};

// The display that a film was graded on (SMPTE ST 2086).
struct MasteringDisplay {
  std::optional<DisplayPrimaries> primaries;
  std::optional<DisplayLuminance> luminance;
  bool operator==(const MasteringDisplay&) const = default;
};

// In candelas per square metre; 0 means unknown.
struct ContentLight {
  std::uint32_t highest = 0;         // of any pixel: MaxCLL
  std::uint32_t highestAverage = 0;  // of any picture: MaxFALL
  bool operator==(const ContentLight&) const = default;
};

struct DolbyVision {
  int majorVersion = 0;
  int minorVersion = 0;
  int profile = 0;
  int level = 0;
  bool hasReferenceData = false;  // RPU: what turns the base layer into the final picture
  bool hasEnhancementLayer = false;
  bool hasBaseLayer = false;
  // What the base layer is without Dolby Vision: 0 nothing, 1 HDR10, 2 SDR, 4 HLG, 6 Blu-ray HDR10.
  int compatibility = 0;
  bool operator==(const DolbyVision&) const = default;
};

// How to turn decoded pictures before showing them: first exchange left and right if mirrored, then
// rotate.
struct VideoOrientation {
  double degrees = 0;  // clockwise, 0 to less than 360
  bool isMirrored = false;
  bool operator==(const VideoOrientation&) const = default;
};

// A picture that maps a sphere.
struct Spherical {
  std::string projection;  // FFmpeg's name: "equirectangular", "cubemap", "tiled equirectangular"
  // Where the camera looks, in degrees.
  double yaw = 0;
  double pitch = 0;
  double roll = 0;
  // What a tile leaves out on each side, as parts of the whole picture, 0 to 1.
  double left = 0;
  double top = 0;
  double right = 0;
  double bottom = 0;
  std::uint32_t padding = 0;  // of cube maps, in pixels
  bool operator==(const Spherical&) const = default;
};

struct Stereo {
  std::string layout;       // FFmpeg's name ("side by side"), or Matroska's for others
  bool isInverted = false;  // right eye first
  bool operator==(const Stereo&) const = default;
};

enum class SubtitleKind { kText, kPicture };

// A file inside the file, such as a font.
struct Attachment {
  std::string fileName;
  std::string mimeType;
  bool operator==(const Attachment&) const = default;
};

struct StreamDetails {
  std::string profileName;   // FFmpeg's: "Main 10"
  std::string language;      // as stored, mostly ISO 639-2; "und" means that nobody knows
  std::string title;         // for people
  std::string handlerName;   // MP4's name of the track's kind; some cameras put theirs there
  std::string encoder;       // of this stream
  std::string creationTime;  // as stored
  std::string timecode;      // of the first picture: "01:00:00:00", or with ";" for drop frames
  Dispositions dispositions;
  std::optional<double> duration;  // of this stream, in seconds
  std::optional<std::int64_t> frameCount;

  // Videos. Covers and photos have only the values of pixel formats among these.
  Rational averageFrameRate;  // frames by duration; 0 when unknown
  std::optional<FieldOrder> fieldOrder;
  int bitDepth = 0;               // of each component; 0 when unknown
  std::string chromaSubsampling;  // "4:2:0"; "4:0:0" for grey, empty for RGB
  bool hasAlpha = false;          // also if it is stored beside the picture
  Colours colours;
  std::optional<MasteringDisplay> masteringDisplay;
  std::optional<ContentLight> contentLight;
  std::optional<DolbyVision> dolbyVision;
  // Of the first picture; empty if that was not read.
  std::optional<bool> hasHdr10Plus;
  std::optional<bool> hasClosedCaptions;  // CEA-608 or 708 inside the pictures
  std::optional<VideoOrientation> orientation;
  std::optional<Spherical> spherical;
  std::optional<Stereo> stereo;

  // Audio.
  std::string channelLayout;  // FFmpeg's name: "5.1(side)"
  std::string sampleFormat;   // FFmpeg's name of what its decoder gives: "fltp"
  int bitsPerRawSample = 0;   // of lossless audio; 0 when unknown
  int initialPadding = 0;     // samples that encoding added at the beginning

  std::optional<SubtitleKind> subtitleKind;
  std::optional<Attachment> attachment;

  // Curves for high dynamic range: perceptual quantization (HDR10), hybrid log-gamma.
  bool isPq() const { return colours.transfer == "smpte2084"; }
  bool isHlg() const { return colours.transfer == "arib-std-b67"; }
};

// In seconds from the beginning of the file.
struct Chapter {
  double start = 0;
  double end = 0;
  std::string title;
};
inline constexpr std::size_t kMostChapters = 1000;

// A channel of a transport stream.
struct Program {
  int number = 0;
  std::string name;      // of the service
  std::string provider;  // of the service
};
inline constexpr std::size_t kMostPrograms = 256;

}  // namespace kolum::media

#endif
