#include <kolum/identifiers.h>

#include "describe/names.h"
#include "describe/parts.h"
#include "describe/table.h"

namespace kolum::describe {

namespace {

using Facts = probe::VideoFacts;

constexpr const char* kLargest = "the largest picture; a cover only if there is no film";

// Unknown unless both sides are reported.
Value sizeOf(const Facts& facts, const std::optional<int>& side) {
  return facts.width && facts.height ? positive(side) : Value();
}

Value aspect(const Facts& facts, int (*term)(const probe::AspectFacts&)) {
  return facts.aspect && facts.width && facts.height ? Value(term(*facts.aspect)) : Value();
}

Value profileOf(const Facts& facts) {
  const int profile = facts.videoProfile.value_or(PROFILE_UNKNOWN);
  if (!facts.videoCodec || profile == PROFILE_UNKNOWN) return nullptr;
  return identifier(profile, profileName(profile, *facts.videoCodec));
}

constexpr auto kPictureRows = std::to_array<Row<Facts>>({
    {{"width", Type::kInteger, Unit::kPixels, "As stored", kLargest},
     [](const Facts& f) { return sizeOf(f, f.width); }},
    {{"height", Type::kInteger, Unit::kPixels, "As stored", kLargest},
     [](const Facts& f) { return sizeOf(f, f.height); }},
    {{"sampleAspectNum", Type::kInteger, Unit::kNone, "Shape of a pixel, numerator", kLargest},
     [](const Facts& f) { return aspect(f, [](const auto& a) { return a.sample.num; }); }},
    {{"sampleAspectDen", Type::kInteger, Unit::kNone, "Shape of a pixel, denominator", kLargest},
     [](const Facts& f) { return aspect(f, [](const auto& a) { return a.sample.den; }); }},
    {{"displayAspectNum", Type::kInteger, Unit::kNone, "Shape of the picture, numerator", kLargest},
     [](const Facts& f) { return aspect(f, [](const auto& a) { return a.display.num; }); }},
    {{"displayAspectDen", Type::kInteger, Unit::kNone, "Shape of the picture, denominator",
      kLargest},
     [](const Facts& f) { return aspect(f, [](const auto& a) { return a.display.den; }); }},
    {{"frameRate", Type::kNumber, Unit::kFramesPerSecond, "The lowest that fits all time stamps",
      "the video"},
     [](const Facts& f) { return f.width && f.height ? positive(f.frameRate) : Value(); }},
    {{"orientation",
      Type::kInteger,
      Unit::kNone,
      "Turned by 180 (3), 270 (6) or 90 (8) degrees",
      "the video",
      {},
      R"("enum":[3,6,8])"},
     [](const Facts& f) { return known(f.orientation); }},
    {{"is360",
      Type::kBoolean,
      Unit::kNone,
      "Whether it is an equirectangular video",
      "the video",
      {},
      R"("const":true)"},
     [](const Facts& f) { return ifTrue(f.isEquirectangular); }},
    {{"videoCodec", Type::kIdentifier, Unit::kNone, "CODEC_ID_*", "the video"},
     [](const Facts& f) {
       return f.videoCodec ? identifier(*f.videoCodec, codecName(*f.videoCodec)) : Value();
     }},
    {{"videoProfile", Type::kIdentifier, Unit::kNone,
      "PROFILE_*, by the name specific to the codec where there is one", "the video"},
     profileOf},
    {{"videoLevel", Type::kInteger, Unit::kNone, "FFmpeg's level number: 41 for H.264 level 4.1",
      "the video"},
     [](const Facts& f) -> Value {
       if (f.videoLevel.value_or(LEVEL_UNKNOWN) == LEVEL_UNKNOWN) return nullptr;
       return *f.videoLevel;
     }},
    {{"videoBitRate", Type::kInteger, Unit::kBitsPerSecond, "Of the video alone", "the video"},
     [](const Facts& f) { return positive(f.videoBitRate); }},
    {{"playException", Type::kIdentifier, Unit::kNone, "PLAY_EXCEPTION_*", "the video"},
     [](const Facts& f) -> Value {
       if (!f.playException) return nullptr;
       return identifier(*f.playException, playExceptionName(*f.playException));
     }},
    {{"creationTime", Type::kInteger, Unit::kSecondsSince1970, "When it was recorded",
      "the container or the video"},
     [](const Facts& f) { return known(f.creationTime); }},
    {{"creationYear", Type::kInteger, Unit::kNone, "Year", "the container"},
     [](const Facts& f) { return positive(f.creationYear); }},
    {{"yearMonth", Type::kText, Unit::kYearMonth, "Year and month", "the same"},
     [](const Facts& f) { return text(f.yearMonth); }},
    {{"creationDate", Type::kText, Unit::kDay, "Date", "the same"},
     [](const Facts& f) { return text(f.creationDate); }},
    {{"contentIdentifier", Type::kText, Unit::kNone, "QuickTime content identifier",
      "the container"},
     [](const Facts& f) { return text(f.contentIdentifier); }},
});

constexpr auto kPictureKeys = keysOf(kPictureRows);

}  // namespace

Part videoPart() {
  return {{"video", "Pictures of videos", kPictureKeys},
          [](Value& object, const Document& document) {
            if (document.video) add(object, kPictureRows, *document.video);
          }};
}

}  // namespace kolum::describe
