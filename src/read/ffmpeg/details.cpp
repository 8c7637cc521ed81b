#include "read/ffmpeg/details.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "base/clean_text.h"
#include "base/text.h"
#include "media/container.h"
#include "read/ffmpeg/ffmpeg.h"
#include "read/ffmpeg/formats.h"
#include "read/ffmpeg/values.h"

namespace kolum::ffmpeg {

namespace {

using media::StreamDetails;

std::string textOf(const char* text) {
  return text != nullptr ? cleanText(text) : "";
}

std::string entry(const AVDictionary* dictionary, const char* key) {
  const AVDictionaryEntry* found = av_dict_get(dictionary, key, nullptr, 0);
  return found != nullptr ? textOf(found->value) : "";
}

// The side data of a stream as its structure; empty if it is not there or shorter.
template <typename Structure>
std::optional<Structure> structureOf(std::span<const std::uint8_t> data) {
  if (data.size() < sizeof(Structure)) return std::nullopt;
  Structure value;
  std::memcpy(&value, data.data(), sizeof value);
  return value;
}

std::optional<double> numberOf(const AVRational& value) {
  const double number = value.den != 0 ? av_q2d(value) : -1;
  if (!std::isfinite(number) || number < 0) return std::nullopt;
  return number;
}

// Every stream.

struct DispositionRow {
  int flag;
  bool media::Dispositions::*mark;
};

constexpr DispositionRow kDispositions[] = {
    {AV_DISPOSITION_DEFAULT, &media::Dispositions::isDefault},
    {AV_DISPOSITION_FORCED, &media::Dispositions::isForced},
    {AV_DISPOSITION_HEARING_IMPAIRED, &media::Dispositions::isForHearingImpaired},
    {AV_DISPOSITION_VISUAL_IMPAIRED, &media::Dispositions::isForVisuallyImpaired},
    {AV_DISPOSITION_COMMENT, &media::Dispositions::isComment},
    {AV_DISPOSITION_ORIGINAL, &media::Dispositions::isOriginal},
    {AV_DISPOSITION_DUB, &media::Dispositions::isDub},
    {AV_DISPOSITION_LYRICS, &media::Dispositions::isLyrics},
    {AV_DISPOSITION_KARAOKE, &media::Dispositions::isKaraoke},
    {AV_DISPOSITION_CLEAN_EFFECTS, &media::Dispositions::isCleanEffects},
    {AV_DISPOSITION_CAPTIONS, &media::Dispositions::isCaptions},
    {AV_DISPOSITION_DESCRIPTIONS, &media::Dispositions::isDescriptions},
    {AV_DISPOSITION_ATTACHED_PIC, &media::Dispositions::isAttachedPicture},
    {AV_DISPOSITION_TIMED_THUMBNAILS, &media::Dispositions::isTimedThumbnails},
};

media::Dispositions dispositionsOf(const AVStream& stream) {
  media::Dispositions found;
  for (const DispositionRow& row : kDispositions)
    found.*row.mark = (stream.disposition & row.flag) != 0;
  found.isStillImage = release::isStillImage(stream);
  return found;
}

// Matroska states durations and numbers of frames in tags only, which may name a language:
// "DURATION-eng".
std::string statistic(const AVStream& stream, std::string_view name) {
  const AVDictionaryEntry* next = nullptr;
  while ((next = av_dict_get(stream.metadata, "", next, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
    const std::string_view key = next->key;
    const bool isOfThisName =
        startsWithIgnoringCase(key, name) && (key.size() == name.size() || key[name.size()] == '-');
    if (isOfThisName) return textOf(next->value);
  }
  return "";
}

// "01:02:03.456000000".
std::optional<double> secondsOf(std::string_view text) {
  constexpr double kMost = 1e9;
  constexpr int kParts = 3;
  double sum = 0;
  for (int part = 0; part < kParts; ++part) {
    double number = -1;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || !(number >= 0 && number < kMost)) return std::nullopt;
    sum = sum * 60 + number;
    text.remove_prefix(static_cast<std::size_t>(rest - text.data()));
    if (part + 1 == kParts) break;
    if (!text.starts_with(':')) return std::nullopt;
    text.remove_prefix(1);
  }
  return sum;
}

// Of Matroska, FFmpeg makes the streams' durations up from that of the file.
std::optional<double> durationOf(const AVFormatContext& context, const AVStream& stream) {
  if (context.iformat->name == media::kDemuxerMatroska)
    return secondsOf(statistic(stream, "DURATION"));
  if (stream.duration != AV_NOPTS_VALUE && stream.duration > 0)
    return static_cast<double>(stream.duration) * av_q2d(stream.time_base);
  return std::nullopt;
}

std::optional<std::int64_t> frameCountOf(const AVStream& stream) {
  if (stream.nb_frames > 0) return stream.nb_frames;
  const std::int64_t count =
      std::strtoll(statistic(stream, "NUMBER_OF_FRAMES").c_str(), nullptr, 10);
  if (count <= 0) return std::nullopt;
  return count;
}

void readEveryStream(const AVFormatContext& context, const AVStream& stream, StreamDetails& found) {
  const AVDictionary* tags = stream.metadata;
  found.language = entry(tags, "language");
  found.title = entry(tags, "title");
  found.handlerName = entry(tags, "handler_name");
  found.encoder = entry(tags, "encoder");
  found.creationTime = entry(tags, "creation_time");
  found.timecode = entry(tags, "timecode");
  found.dispositions = dispositionsOf(stream);
  found.duration = durationOf(context, stream);
  found.frameCount = frameCountOf(stream);
}

// Pictures.

struct SubsamplingRow {
  int horizontal;  // logarithms of the factors
  int vertical;
  const char* name;
};

constexpr SubsamplingRow kSubsamplings[] = {{0, 0, "4:4:4"}, {0, 1, "4:4:0"}, {1, 0, "4:2:2"},
                                            {1, 1, "4:2:0"}, {2, 0, "4:1:1"}, {2, 2, "4:1:0"}};

std::string subsamplingOf(const AVPixFmtDescriptor& format) {
  constexpr int kLumaAndAlpha = 2;
  constexpr std::uint64_t kNotYuv =
      AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BAYER;
  if ((format.flags & kNotYuv) != 0) return "";
  if (format.nb_components <= kLumaAndAlpha) return "4:0:0";
  for (const SubsamplingRow& row : kSubsamplings)
    if (row.horizontal == format.log2_chroma_w && row.vertical == format.log2_chroma_h)
      return row.name;
  return "";
}

void readPixelFormat(const AVStream& stream, StreamDetails& found) {
  const AVPixFmtDescriptor* format =
      av_pix_fmt_desc_get(static_cast<AVPixelFormat>(stream.codecpar->format));
  if (format != nullptr) {
    // A palette's entries have 8 bits each; FFmpeg counts the bits of its index.
    found.bitDepth = format->comp[0].depth;
    found.chromaSubsampling = subsamplingOf(*format);
    found.hasAlpha = (format->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
  }
  if (entry(stream.metadata, "alpha_mode") == "1") found.hasAlpha = true;
}

std::optional<media::FieldOrder> fieldOrderOf(const AVCodecParameters& parameters) {
  switch (parameters.field_order) {
    case AV_FIELD_PROGRESSIVE:
      return media::FieldOrder::kProgressive;
    case AV_FIELD_TT:
      return media::FieldOrder::kTopFirst;
    case AV_FIELD_BB:
      return media::FieldOrder::kBottomFirst;
    case AV_FIELD_TB:
      return media::FieldOrder::kTopStoredBottomShown;
    case AV_FIELD_BT:
      return media::FieldOrder::kBottomStoredTopShown;
    default:
      return std::nullopt;
  }
}

// FFmpeg's name, unless it is one of those for values that are not stated.
std::string nameOf(const char* name) {
  constexpr std::string_view kNothing[] = {"unknown", "unspecified", "reserved"};
  const std::string text = textOf(name);
  const bool isNothing =
      std::find(std::begin(kNothing), std::end(kNothing), text) != std::end(kNothing);
  return isNothing ? "" : text;
}

// Containers may state any number, which is no value of the enumeration then.
template <typename Enum>
std::string nameOf(const Enum& stored, int count, const char* (*name)(Enum)) {
  static_assert(sizeof(Enum) == sizeof(int));
  int number = 0;
  std::memcpy(&number, &stored, sizeof number);
  return number >= 0 && number < count ? nameOf(name(static_cast<Enum>(number))) : "";
}

media::Colours coloursOf(const AVCodecParameters& parameters) {
  return {.primaries = nameOf(parameters.color_primaries, AVCOL_PRI_NB, av_color_primaries_name),
          .transfer = nameOf(parameters.color_trc, AVCOL_TRC_NB, av_color_transfer_name),
          .matrix = nameOf(parameters.color_space, AVCOL_SPC_NB, av_color_space_name),
          .range = nameOf(parameters.color_range, AVCOL_RANGE_NB, av_color_range_name),
          .chromaLocation =
              nameOf(parameters.chroma_location, AVCHROMA_LOC_NB, av_chroma_location_name)};
}

std::optional<media::Chromaticity> chromaticityOf(const AVRational (&coordinates)[2]) {
  const auto x = numberOf(coordinates[0]);
  const auto y = numberOf(coordinates[1]);
  if (!x || !y || *x > 1 || *y > 1) return std::nullopt;
  return media::Chromaticity{*x, *y};
}

std::optional<media::MasteringDisplay> masteringDisplayOf(const AVStream& stream) {
  const auto data = structureOf<AVMasteringDisplayMetadata>(
      release::sideDataOf(stream, AV_PKT_DATA_MASTERING_DISPLAY_METADATA));
  if (!data) return std::nullopt;
  media::MasteringDisplay display;
  if (data->has_primaries != 0) {
    const auto red = chromaticityOf(data->display_primaries[0]);
    const auto green = chromaticityOf(data->display_primaries[1]);
    const auto blue = chromaticityOf(data->display_primaries[2]);
    const auto white = chromaticityOf(data->white_point);
    if (red && green && blue && white) display.primaries = {*red, *green, *blue, *white};
  }
  if (data->has_luminance != 0) {
    const auto lowest = numberOf(data->min_luminance);
    const auto highest = numberOf(data->max_luminance);
    if (lowest && highest && *highest > *lowest) display.luminance = {*lowest, *highest};
  }
  if (!display.primaries && !display.luminance) return std::nullopt;
  return display;
}

std::optional<media::ContentLight> contentLightOf(const AVStream& stream) {
  const auto data = structureOf<AVContentLightMetadata>(
      release::sideDataOf(stream, AV_PKT_DATA_CONTENT_LIGHT_LEVEL));
  if (!data || (data->MaxCLL == 0 && data->MaxFALL == 0)) return std::nullopt;
  return media::ContentLight{data->MaxCLL, data->MaxFALL};
}

std::optional<media::DolbyVision> dolbyVisionOf(const AVStream& stream) {
  const auto data = structureOf<release::DolbyVisionRecord>(release::dolbyVisionOf(stream));
  if (!data) return std::nullopt;
  return media::DolbyVision{.majorVersion = data->dv_version_major,
                            .minorVersion = data->dv_version_minor,
                            .profile = data->dv_profile,
                            .level = data->dv_level,
                            .hasReferenceData = data->rpu_present_flag != 0,
                            .hasEnhancementLayer = data->el_present_flag != 0,
                            .hasBaseLayer = data->bl_present_flag != 0,
                            .compatibility = data->dv_bl_signal_compatibility_id};
}

// As an angle from 0 to less than 360.
std::optional<double> circled(double degrees) {
  if (!std::isfinite(degrees)) return std::nullopt;
  // FFmpeg calculates with binary fractions: quarters come out a little off.
  constexpr double kSteps = 1000;
  const double rounded = std::round(std::fmod(degrees, 360) * kSteps) / kSteps;
  const double positive = rounded < 0 ? rounded + 360 : rounded;
  return positive >= 360 ? 0 : positive;
}

// The columns of the matrix are where the axes of the stored picture go. Exchanging left and right
// first turns the first axis over.
std::optional<media::VideoOrientation> orientationOfMatrix(const AVStream& stream) {
  using Matrix = std::array<std::int32_t, 9>;
  auto matrix = structureOf<Matrix>(release::sideDataOf(stream, AV_PKT_DATA_DISPLAYMATRIX));
  if (!matrix) return std::nullopt;
  Matrix& m = *matrix;
  const bool isMirrored = double{1} * m[0] * m[4] - double{1} * m[1] * m[3] < 0;
  if (isMirrored) {
    m[0] = static_cast<std::int32_t>(0U - static_cast<std::uint32_t>(m[0]));
    m[1] = static_cast<std::int32_t>(0U - static_cast<std::uint32_t>(m[1]));
  }
  const auto degrees = circled(-av_display_rotation_get(m.data()));
  if (!degrees || (*degrees == 0 && !isMirrored)) return std::nullopt;
  return media::VideoOrientation{*degrees, isMirrored};
}

std::optional<media::VideoOrientation> orientationOf(const AVStream& stream) {
  if (const auto found = orientationOfMatrix(stream)) return found;
  const std::string tag = entry(stream.metadata, "rotate");
  char* end = nullptr;
  const auto degrees = circled(std::strtod(tag.c_str(), &end));
  if (end == tag.c_str() || !degrees || *degrees == 0) return std::nullopt;
  return media::VideoOrientation{*degrees, false};
}

std::optional<media::Spherical> sphericalOf(const AVStream& stream) {
  constexpr double kDegree = 1 << 16;
  constexpr double kWhole = 4294967296.0;
  const auto data =
      structureOf<AVSphericalMapping>(release::sideDataOf(stream, AV_PKT_DATA_SPHERICAL));
  if (!data) return std::nullopt;
  return media::Spherical{.projection = textOf(av_spherical_projection_name(data->projection)),
                          .yaw = data->yaw / kDegree,
                          .pitch = data->pitch / kDegree,
                          .roll = data->roll / kDegree,
                          .left = data->bound_left / kWhole,
                          .top = data->bound_top / kWhole,
                          .right = data->bound_right / kWhole,
                          .bottom = data->bound_bottom / kWhole,
                          .padding = data->padding};
}

std::optional<media::Stereo> stereoOf(const AVStream& stream) {
  const auto data = structureOf<AVStereo3D>(release::sideDataOf(stream, AV_PKT_DATA_STEREO3D));
  if (data && data->type != AV_STEREO3D_2D)
    return media::Stereo{.layout = textOf(av_stereo3d_type_name(data->type)),
                         .isInverted = (data->flags & AV_STEREO3D_FLAG_INVERT) != 0};
  const std::string mode = entry(stream.metadata, "stereo_mode");
  if (mode.empty() || mode == "mono") return std::nullopt;
  return media::Stereo{.layout = mode};
}

// FFmpeg's decoder takes the curve that the pictures prefer only when it decodes them.
void addPictureMetadata(const headers::PictureMetadata& picture, StreamDetails& found) {
  if (!found.masteringDisplay) found.masteringDisplay = picture.masteringDisplay;
  if (!found.contentLight) found.contentLight = picture.contentLight;
  found.hasHdr10Plus = picture.hasHdr10Plus;
  found.hasClosedCaptions = picture.hasClosedCaptions;
  if (!picture.preferredTransfer || *picture.preferredTransfer >= AVCOL_TRC_NB) return;
  const auto preferred = static_cast<AVColorTransferCharacteristic>(*picture.preferredTransfer);
  const std::string name = nameOf(av_color_transfer_name(preferred));
  if (!name.empty()) found.colours.transfer = name;
}

void readVideo(const AVFormatContext& context, const AVStream& stream,
               const headers::PictureMetadata* picture, StreamDetails& found) {
  const AVCodecParameters& parameters = *stream.codecpar;
  readPixelFormat(stream, found);
  if (isCover(stream) || isStillPictureFile(context)) return;
  found.profileName = textOf(avcodec_profile_name(parameters.codec_id, parameters.profile));
  found.averageFrameRate = rationalOf(stream.avg_frame_rate);
  found.fieldOrder = fieldOrderOf(parameters);
  found.colours = coloursOf(parameters);
  found.masteringDisplay = masteringDisplayOf(stream);
  found.contentLight = contentLightOf(stream);
  found.dolbyVision = dolbyVisionOf(stream);
  found.orientation = orientationOf(stream);
  found.spherical = sphericalOf(stream);
  found.stereo = stereoOf(stream);
  if (picture != nullptr) addPictureMetadata(*picture, found);
}

// Other kinds of streams.

void readAudio(const AVStream& stream, StreamDetails& found) {
  const AVCodecParameters& parameters = *stream.codecpar;
  found.profileName = textOf(avcodec_profile_name(parameters.codec_id, parameters.profile));
  found.channelLayout = release::channelLayoutName(parameters);
  found.sampleFormat =
      textOf(av_get_sample_fmt_name(static_cast<AVSampleFormat>(parameters.format)));
  found.bitsPerRawSample = std::max(0, parameters.bits_per_raw_sample);
  found.initialPadding = std::max(0, parameters.initial_padding);
}

std::optional<media::SubtitleKind> subtitleKindOf(AVCodecID codec) {
  const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec);
  if (descriptor == nullptr) return std::nullopt;
  if ((descriptor->props & AV_CODEC_PROP_BITMAP_SUB) != 0) return media::SubtitleKind::kPicture;
  if ((descriptor->props & AV_CODEC_PROP_TEXT_SUB) != 0) return media::SubtitleKind::kText;
  return std::nullopt;
}

std::optional<media::Attachment> attachmentOf(const AVStream& stream) {
  media::Attachment found = {.fileName = entry(stream.metadata, "filename"),
                             .mimeType = entry(stream.metadata, "mimetype")};
  if (found.fileName.empty() && found.mimeType.empty()) return std::nullopt;
  return found;
}

StreamDetails detailsOf(const AVFormatContext& context, const AVStream& stream,
                        const FirstPictures& pictures) {
  StreamDetails found;
  readEveryStream(context, stream, found);
  // Matroska's covers are attachments, too.
  found.attachment = attachmentOf(stream);
  switch (stream.codecpar->codec_type) {
    case AVMEDIA_TYPE_VIDEO:
      readVideo(context, stream, pictures.of(stream), found);
      break;
    case AVMEDIA_TYPE_AUDIO:
      readAudio(stream, found);
      break;
    case AVMEDIA_TYPE_SUBTITLE:
      found.subtitleKind = subtitleKindOf(stream.codecpar->codec_id);
      break;
    default:
      break;
  }
  return found;
}

void addChapters(const AVFormatContext& context, media::Container& container) {
  const std::size_t count = std::min<std::size_t>(context.nb_chapters, media::kMostChapters);
  for (std::size_t i = 0; i < count; ++i) {
    const AVChapter& chapter = *context.chapters[i];
    if (chapter.time_base.den <= 0 || chapter.start == AV_NOPTS_VALUE) continue;
    const double unit = av_q2d(chapter.time_base);
    const double start = static_cast<double>(chapter.start) * unit;
    // Open ends: the chapter lasts until the next one, which FFmpeg mostly says itself.
    const double end =
        chapter.end == AV_NOPTS_VALUE ? start : static_cast<double>(chapter.end) * unit;
    container.chapters.push_back(
        {.start = start, .end = std::max(start, end), .title = entry(chapter.metadata, "title")});
  }
}

void addPrograms(const AVFormatContext& context, media::Container& container) {
  const std::size_t count = std::min<std::size_t>(context.nb_programs, media::kMostPrograms);
  for (std::size_t i = 0; i < count; ++i) {
    const AVProgram& program = *context.programs[i];
    container.programs.push_back({.number = program.id,
                                  .name = entry(program.metadata, "service_name"),
                                  .provider = entry(program.metadata, "service_provider")});
  }
}

// Nobody's film has that much text; more would only make the file unreadable for those who receive
// it from a worker.
void limitTexts(media::Container& container) {
  std::size_t left = std::size_t{1} << 20;
  const auto limit = [&](std::string& text) {
    if (text.size() > left) text.clear();
    left -= text.size();
  };
  for (media::Stream& stream : container.streams) {
    StreamDetails& details = *stream.details;
    for (std::string* text : {&details.language, &details.title, &details.handlerName,
                              &details.encoder, &details.creationTime, &details.timecode})
      limit(*text);
    if (!details.attachment) continue;
    limit(details.attachment->fileName);
    limit(details.attachment->mimeType);
  }
  for (media::Chapter& chapter : container.chapters) limit(chapter.title);
  for (media::Program& program : container.programs) {
    limit(program.name);
    limit(program.provider);
  }
}

}  // namespace

void addDetails(const AVFormatContext& context, const FirstPictures& pictures,
                media::Container& container) {
  for (media::Stream& stream : container.streams)
    stream.details = detailsOf(context, *context.streams[stream.index], pictures);
  addChapters(context, container);
  addPrograms(context, container);
  limitTexts(container);
}

}  // namespace kolum::ffmpeg
