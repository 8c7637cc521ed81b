#include <kolum/identifiers.h>

#include <algorithm>
#include <string>
#include <vector>

#include "describe/dsd.h"
#include "describe/names.h"
#include "describe/parts.h"
#include "describe/table.h"
#include "media/identifiers.h"
#include "media/levels.h"
#include "probe/numbers.h"

namespace kolum::describe {

namespace {

using media::Stream;
using media::StreamDetails;

constexpr const char* kContainer = "the container";
constexpr const char* kCodec = "the codec's header";
constexpr const char* kEither = "the codec's header or the container";

const StreamDetails& detailsOf(const Stream& stream) {
  static const StreamDetails kNone;
  return stream.details ? *stream.details : kNone;
}

bool isPicture(const Stream& stream) {
  return stream.type == media::StreamType::kVideo;
}

bool isFilm(const Stream& stream) {
  return isPicture(stream) && !stream.isAttachedPicture;
}

std::string_view typeName(const Stream& stream) {
  if (stream.isAttachedPicture) return "picture";
  switch (stream.type) {
    case media::StreamType::kVideo:
      return "video";
    case media::StreamType::kAudio:
      return "audio";
    case media::StreamType::kSubtitle:
      return "subtitle";
    case media::StreamType::kOther:
      break;
  }
  return detailsOf(stream).attachment ? "attachment" : "data";
}

Value codecOf(const Stream& stream) {
  const int codec = media::codecOfFfmpeg(stream.codec);
  return codec > 0 ? identifier(codec, codecName(codec)) : Value();
}

Value profileOf(const Stream& stream) {
  const int codec = media::codecOfFfmpeg(stream.codec);
  const int profile = media::profileOfFfmpeg(codec, probe::profileNumber(stream));
  if (codec <= 0 || profile == PROFILE_UNKNOWN) return nullptr;
  return identifier(profile, profileName(profile, codec));
}

// Exact, as "24000/1001" or "25".
Value rateOf(const media::Rational& rate) {
  if (rate.num <= 0 || rate.den <= 0) return nullptr;
  return std::to_string(rate.num) + (rate.den == 1 ? "" : "/" + std::to_string(rate.den));
}

Value ratioOf(const media::Rational& ratio) {
  if (ratio.num <= 0 || ratio.den <= 0) return nullptr;
  return std::to_string(ratio.num) + ":" + std::to_string(ratio.den);
}

// In the order of the enumerations.
constexpr const char* kFieldOrders[] = {"progressive", "top first", "bottom first",
                                        "top stored, bottom shown first",
                                        "bottom stored, top shown first"};
constexpr const char* kSubtitleKinds[] = {"text", "picture"};

template <typename Enum, std::size_t kSize>
Value nameOf(const std::optional<Enum>& value, const char* const (&names)[kSize]) {
  const auto index = value ? static_cast<std::size_t>(*value) : kSize;
  return index < kSize ? text(names[index]) : Value();
}

// What people call it; several may apply.
Value dynamicRange(const Stream& stream) {
  const StreamDetails& details = detailsOf(stream);
  std::vector<std::string> names;
  if (details.dolbyVision) names.emplace_back("Dolby Vision");
  if (details.hasHdr10Plus.value_or(false)) names.emplace_back("HDR10+");
  if (details.isPq()) names.emplace_back(details.masteringDisplay ? "HDR10" : "PQ");
  if (details.isHlg()) names.emplace_back("HLG");
  return texts(names);
}

struct NamedDisposition {
  bool media::Dispositions::*mark;
  const char* name;
};

constexpr NamedDisposition kDispositions[] = {
    {&media::Dispositions::isDefault, "default"},
    {&media::Dispositions::isForced, "forced"},
    {&media::Dispositions::isForHearingImpaired, "hearing impaired"},
    {&media::Dispositions::isForVisuallyImpaired, "visually impaired"},
    {&media::Dispositions::isComment, "comment"},
    {&media::Dispositions::isOriginal, "original"},
    {&media::Dispositions::isDub, "dub"},
    {&media::Dispositions::isLyrics, "lyrics"},
    {&media::Dispositions::isKaraoke, "karaoke"},
    {&media::Dispositions::isCleanEffects, "clean effects"},
    {&media::Dispositions::isCaptions, "captions"},
    {&media::Dispositions::isDescriptions, "descriptions"},
    {&media::Dispositions::isTimedThumbnails, "timed thumbnails"},
    {&media::Dispositions::isStillImage, "still image"},
};

Value marksOf(const Stream& stream) {
  std::vector<std::string> names;
  for (const NamedDisposition& row : kDispositions)
    if (detailsOf(stream).dispositions.*row.mark) names.emplace_back(row.name);
  return texts(names);
}

constexpr auto kDolbyVisionRows = std::to_array<Row<media::DolbyVision>>({
    {{"profile", Type::kInteger, Unit::kNone, "Profile", kContainer},
     [](const media::DolbyVision& d) -> Value { return d.profile; }},
    {{"level", Type::kInteger, Unit::kNone, "Level", kContainer},
     [](const media::DolbyVision& d) -> Value { return d.level; }},
    {{"compatibility", Type::kInteger, Unit::kNone,
      "What others see: 0 nothing, 1 HDR10, 2 SDR, 4 HLG, 6 Blu-ray HDR10", kContainer},
     [](const media::DolbyVision& d) -> Value { return d.compatibility; }},
    {{"enhancementLayer", Type::kBoolean, Unit::kNone, "Whether there is one", kContainer},
     [](const media::DolbyVision& d) -> Value { return d.hasEnhancementLayer; }},
});
constexpr auto kDolbyVisionKeys = keysOf(kDolbyVisionRows);

constexpr auto kLightRows = std::to_array<Row<media::ContentLight>>({
    {{"highest", Type::kInteger, Unit::kNone, "Of any pixel, cd/m\u00B2", kEither},
     [](const media::ContentLight& light) { return positive(light.highest); }},
    {{"highestAverage", Type::kInteger, Unit::kNone, "Of any picture, cd/m\u00B2", kEither},
     [](const media::ContentLight& light) { return positive(light.highestAverage); }},
});
constexpr auto kLightKeys = keysOf(kLightRows);

constexpr auto kLuminanceRows = std::to_array<Row<media::DisplayLuminance>>({
    {{"lowest", Type::kNumber, Unit::kNone, "cd/m\u00B2", kEither},
     [](const media::DisplayLuminance& l) -> Value { return l.lowest; }},
    {{"highest", Type::kNumber, Unit::kNone, "cd/m\u00B2", kEither},
     [](const media::DisplayLuminance& l) -> Value { return l.highest; }},
});
constexpr auto kLuminanceKeys = keysOf(kLuminanceRows);

constexpr auto kColourRows = std::to_array<Row<media::Colours>>({
    {{"primaries", Type::kText, Unit::kNone, "FFmpeg's name: \"bt2020\"", kEither},
     [](const media::Colours& c) { return text(c.primaries); }},
    {{"transfer", Type::kText, Unit::kNone, "FFmpeg's name: \"smpte2084\"", kEither},
     [](const media::Colours& c) { return text(c.transfer); }},
    {{"matrix", Type::kText, Unit::kNone, "FFmpeg's name: \"bt2020nc\"", kEither},
     [](const media::Colours& c) { return text(c.matrix); }},
    {{"range", Type::kText, Unit::kNone, "\"tv\" (limited) or \"pc\" (full)", kEither},
     [](const media::Colours& c) { return text(c.range); }},
    {{"chromaLocation", Type::kText, Unit::kNone, "FFmpeg's name: \"left\"", kEither},
     [](const media::Colours& c) { return text(c.chromaLocation); }},
});
constexpr auto kColourKeys = keysOf(kColourRows);

constexpr auto kSphericalRows = std::to_array<Row<media::Spherical>>({
    {{"projection", Type::kText, Unit::kNone, "FFmpeg's name: \"equirectangular\"", kContainer},
     [](const media::Spherical& s) { return text(s.projection); }},
    {{"yaw", Type::kNumber, Unit::kDegrees, "Where the camera looks", kContainer},
     [](const media::Spherical& s) -> Value { return s.yaw; }},
    {{"pitch", Type::kNumber, Unit::kDegrees, "Where the camera looks", kContainer},
     [](const media::Spherical& s) -> Value { return s.pitch; }},
    {{"roll", Type::kNumber, Unit::kDegrees, "Where the camera looks", kContainer},
     [](const media::Spherical& s) -> Value { return s.roll; }},
});
constexpr auto kSphericalKeys = keysOf(kSphericalRows);

constexpr auto kStreamRows =
    std::to_array<Row<Stream>>({
        {{"type", Type::kText, Unit::kNone,
          "\"video\", \"audio\", \"subtitle\", \"picture\" (attached), \"attachment\" or \"data\"",
          kContainer},
         [](const Stream& s) { return text(typeName(s)); }},
        {{"index", Type::kInteger, Unit::kNone, "Number in the file, from 0", kContainer},
         [](const Stream& s) -> Value { return s.index; }},
        {{"id", Type::kInteger, Unit::kNone, "The container's own number, such as a PID",
          kContainer},
         [](const Stream& s) { return positive(s.id); }},
        {{"codec", Type::kIdentifier, Unit::kNone, "CODEC_ID_*", kContainer}, codecOf},
        {{"codecName", Type::kText, Unit::kNone, "FFmpeg's name", kContainer},
         [](const Stream& s) { return text(s.codecName); }},
        {{"codecTag", Type::kText, Unit::kNone, "Four characters, such as \"avc1\"", kContainer},
         [](const Stream& s) { return s.codecTag != 0 ? text(s.codecTagText) : Value(); }},
        {{"profile", Type::kIdentifier, Unit::kNone, "PROFILE_*", kCodec}, profileOf},
        {{"profileName", Type::kText, Unit::kNone, "FFmpeg's name", kCodec},
         [](const Stream& s) { return text(detailsOf(s).profileName); }},
        {{"level", Type::kInteger, Unit::kNone, "FFmpeg's number", kCodec},
         [](const Stream& s) -> Value {
           const int level = probe::levelNumber(s);
           if (level == LEVEL_UNKNOWN) return nullptr;
           return level;
         }},
        {{"language", Type::kText, Unit::kNone, "As stored, mostly ISO 639-2", kContainer},
         [](const Stream& s) { return text(detailsOf(s).language); }},
        {{"title", Type::kText, Unit::kNone, "Title", kContainer},
         [](const Stream& s) { return text(detailsOf(s).title); }},
        {{"marks", Type::kTexts, Unit::kNone, "\"default\", \"forced\", \"hearing impaired\", ...",
          kContainer},
         marksOf},
        {{"duration", Type::kNumber, Unit::kSeconds, "Of this stream", kContainer},
         [](const Stream& s) { return known(detailsOf(s).duration); }},
        {{"frames", Type::kInteger, Unit::kCount, "Number of frames, as stored", kContainer},
         [](const Stream& s) { return known(detailsOf(s).frameCount); }},
        {{"bitRate", Type::kInteger, Unit::kBitsPerSecond, "Of this stream", kEither},
         [](const Stream& s) { return positive(s.bitRate); }},
        {{"width", Type::kInteger, Unit::kPixels, "As stored", kCodec},
         [](const Stream& s) { return positive(s.width); }},
        {{"height", Type::kInteger, Unit::kPixels, "As stored", kCodec},
         [](const Stream& s) { return positive(s.height); }},
        {{"sampleAspect", Type::kText, Unit::kNone, "Shape of a pixel: \"64:45\"", kEither},
         [](const Stream& s) { return isPicture(s) ? ratioOf(s.sampleAspect) : Value(); }},
        {{"frameRate", Type::kText, Unit::kNone, "Exact: \"24000/1001\"", kContainer},
         [](const Stream& s) { return isFilm(s) ? rateOf(s.frameRate) : Value(); }},
        {{"averageFrameRate", Type::kText, Unit::kNone, "Frames by duration, exact", kContainer},
         [](const Stream& s) { return rateOf(detailsOf(s).averageFrameRate); }},
        {{"fieldOrder", Type::kText, Unit::kNone, "\"progressive\", \"top first\", ...", kEither},
         [](const Stream& s) { return nameOf(detailsOf(s).fieldOrder, kFieldOrders); }},
        {{"pixelFormat", Type::kText, Unit::kNone, "FFmpeg's name: \"yuv420p10le\"", kCodec},
         [](const Stream& s) { return isPicture(s) ? text(s.pixelFormat) : Value(); }},
        {{"bitDepth", Type::kInteger, Unit::kCount, "Bits of each component", kCodec},
         [](const Stream& s) { return positive(detailsOf(s).bitDepth); }},
        {{"chroma", Type::kText, Unit::kNone, "\"4:2:0\", ...", kCodec},
         [](const Stream& s) { return text(detailsOf(s).chromaSubsampling); }},
        {{"alpha", Type::kBoolean, Unit::kNone, "Whether it has transparency", kCodec},
         [](const Stream& s) { return ifTrue(detailsOf(s).hasAlpha); }},
        {{"colours", Type::kObject, Unit::kNone, "How to show its numbers", kEither, kColourKeys},
         [](const Stream& s) { return objectOf(kColourRows, detailsOf(s).colours); }},
        {{"dynamicRange", Type::kTexts, Unit::kNone,
          "\"HDR10\", \"HDR10+\", \"HLG\", \"Dolby Vision\", \"PQ\"", kEither},
         dynamicRange},
        {{"contentLight", Type::kObject, Unit::kNone, "MaxCLL and MaxFALL", kEither, kLightKeys},
         [](const Stream& s) {
           const auto& light = detailsOf(s).contentLight;
           return light ? objectOf(kLightRows, *light) : Value();
         }},
        {{"masteringLuminance", Type::kObject, Unit::kNone, "Of the display that it was graded on",
          kEither, kLuminanceKeys},
         [](const Stream& s) {
           const auto& display = detailsOf(s).masteringDisplay;
           return display && display->luminance ? objectOf(kLuminanceRows, *display->luminance)
                                                : Value();
         }},
        {{"dolbyVision", Type::kObject, Unit::kNone, "Dolby Vision", kContainer, kDolbyVisionKeys},
         [](const Stream& s) {
           const auto& vision = detailsOf(s).dolbyVision;
           return vision ? objectOf(kDolbyVisionRows, *vision) : Value();
         }},
        {{"closedCaptions", Type::kBoolean, Unit::kNone, "Whether the pictures carry them", kCodec},
         [](const Stream& s) { return ifTrue(detailsOf(s).hasClosedCaptions.value_or(false)); }},
        {{"rotation", Type::kNumber, Unit::kDegrees, "To be turned clockwise", kEither},
         [](const Stream& s) {
           const auto& orientation = detailsOf(s).orientation;
           return orientation ? Value(orientation->degrees) : Value();
         }},
        {{"mirrored", Type::kBoolean, Unit::kNone, "To be mirrored before", kEither},
         [](const Stream& s) {
           const auto& orientation = detailsOf(s).orientation;
           return ifTrue(orientation && orientation->isMirrored);
         }},
        {{"spherical", Type::kObject, Unit::kNone, "How it maps a sphere", kContainer,
          kSphericalKeys},
         [](const Stream& s) {
           const auto& spherical = detailsOf(s).spherical;
           return spherical ? objectOf(kSphericalRows, *spherical) : Value();
         }},
        {{"stereo", Type::kText, Unit::kNone, "\"side by side\", ...", kEither},
         [](const Stream& s) {
           const auto& stereo = detailsOf(s).stereo;
           return stereo ? text(stereo->layout) : Value();
         }},
        {{"channels", Type::kInteger, Unit::kCount, "Audio channels", kCodec},
         [](const Stream& s) { return positive(s.channels); }},
        {{"layout", Type::kText, Unit::kNone, "FFmpeg's name: \"5.1(side)\"", kEither},
         [](const Stream& s) { return text(detailsOf(s).channelLayout); }},
        {{"sampleRate", Type::kInteger, Unit::kHertz, "Samples per second", kCodec},
         [](const Stream& s) { return positive(sampleRateOf(s)); }},
        {{"bitsPerSample", Type::kInteger, Unit::kCount, "Of lossless sound", kCodec},
         [](const Stream& s) -> Value {
           if (isDsd(s)) return kDsdBitsPerSample;
           return positive(detailsOf(s).bitsPerRawSample);
         }},
        {{"sampleFormat", Type::kText, Unit::kNone, "FFmpeg's name: \"fltp\"", kCodec},
         [](const Stream& s) { return text(detailsOf(s).sampleFormat); }},
        {{"subtitleKind", Type::kText, Unit::kNone, "\"text\" or \"picture\"", kCodec},
         [](const Stream& s) { return nameOf(detailsOf(s).subtitleKind, kSubtitleKinds); }},
        {{"fileName", Type::kText, Unit::kNone, "Of an attachment", kContainer},
         [](const Stream& s) {
           const auto& attachment = detailsOf(s).attachment;
           return attachment ? text(attachment->fileName) : Value();
         }},
        {{"mimeType", Type::kText, Unit::kNone, "Of an attachment", kContainer},
         [](const Stream& s) {
           const auto& attachment = detailsOf(s).attachment;
           return attachment ? text(attachment->mimeType) : Value();
         }},
        {{"timecode", Type::kText, Unit::kNone, "Of the first picture: \"01:00:00:00\"",
          kContainer},
         [](const Stream& s) { return text(detailsOf(s).timecode); }},
        {{"encoder", Type::kText, Unit::kNone, "The program that made it", kContainer},
         [](const Stream& s) { return text(detailsOf(s).encoder); }},
        {{"handler", Type::kText, Unit::kNone, "MP4's name of the track's kind", kContainer},
         [](const Stream& s) { return text(detailsOf(s).handlerName); }},
    });
constexpr auto kStreamKeys = keysOf(kStreamRows);

struct Chapter {
  double start = 0;
  std::optional<double> end;
  std::string title;
};

constexpr auto kChapterRows = std::to_array<Row<Chapter>>({
    {{"start", Type::kNumber, Unit::kSeconds, "From the beginning", kContainer},
     [](const Chapter& c) -> Value { return c.start; }},
    {{"end", Type::kNumber, Unit::kSeconds, "From the beginning", kContainer},
     [](const Chapter& c) { return known(c.end); }},
    {{"title", Type::kText, Unit::kNone, "Title", kContainer},
     [](const Chapter& c) { return text(c.title); }},
});
constexpr auto kChapterKeys = keysOf(kChapterRows);

// The container's, or else those of a song's tag.
std::vector<Chapter> chaptersOf(const read::Findings& found) {
  std::vector<Chapter> chapters;
  if (found.container)
    for (const media::Chapter& chapter : found.container->chapters)
      chapters.push_back({chapter.start, chapter.end, chapter.title});
  if (chapters.empty() && found.songTags)
    for (const media::SongChapter& chapter : found.songTags->chapters)
      chapters.push_back({chapter.start, chapter.end, chapter.title});
  // Tags may list them in any order.
  std::ranges::stable_sort(chapters, {}, &Chapter::start);
  return chapters;
}

constexpr auto kProgramRows = std::to_array<Row<media::Program>>({
    {{"number", Type::kInteger, Unit::kNone, "Number", kContainer},
     [](const media::Program& p) -> Value { return p.number; }},
    {{"name", Type::kText, Unit::kNone, "Name of the channel", kContainer},
     [](const media::Program& p) { return text(p.name); }},
    {{"provider", Type::kText, Unit::kNone, "Who broadcasts it", kContainer},
     [](const media::Program& p) { return text(p.provider); }},
});
constexpr auto kProgramKeys = keysOf(kProgramRows);

constexpr auto kKeys = std::to_array<Key>({
    {"streams", Type::kObjects, Unit::kNone, "All streams, in their order", kContainer,
     kStreamKeys},
    {"chapters", Type::kObjects, Unit::kNone, "Chapters, also of audio books", kContainer,
     kChapterKeys},
    {"programs", Type::kObjects, Unit::kNone, "Channels of a transport stream", kContainer,
     kProgramKeys},
});

void put(Value& object, const Key& key, Value value) {
  if (!value.isNull()) object.set(key.name, std::move(value));
}

// Photos are one picture, about which the document says all.
void addStreams(Value& object, const Document& document) {
  const auto& container = document.found.container;
  if (!container || document.photo || !document.hasDetails) return;
  put(object, kKeys[0], objectsOf(kStreamRows, container->streams));
  put(object, kKeys[1], objectsOf(kChapterRows, chaptersOf(document.found)));
  put(object, kKeys[2], objectsOf(kProgramRows, container->programs));
}

}  // namespace

Part streamPart() {
  return {{"streams", "Streams", kKeys}, addStreams};
}

}  // namespace kolum::describe
