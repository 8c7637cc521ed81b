#include "read/ffmpeg/values.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "media/classic_codecs.h"
#include "media/levels.h"
#include "read/ffmpeg/ffmpeg.h"
#include "read/ffmpeg/formats.h"

namespace kolum::ffmpeg {

namespace {

using media::StreamType;

// The demuxers that the rules in this file refer to.
constexpr std::string_view kMp4 = "mov,mp4,m4a,3gp,3g2,mj2";
constexpr std::string_view kRawH264 = "h264";

bool isIdentity(const std::int32_t* matrix) {
  constexpr std::int32_t kIdentity[9] = {1 << 16, 0, 0, 0, 1 << 16, 0, 0, 0, 1 << 30};
  return std::memcmp(matrix, kIdentity, sizeof kIdentity) == 0;
}

// What release 57 wrote as the "rotate" entry of MP4 and QuickTime tracks: the clockwise angle.
std::optional<std::string> rotateOfMatrix(const std::int32_t* matrix) {
  if (isIdentity(matrix)) return std::nullopt;
  double degrees = -av_display_rotation_get(matrix);
  if (std::isnan(degrees)) return std::nullopt;
  if (degrees < 0) degrees += 360;
  char text[32];
  std::snprintf(text, sizeof text, "%g", degrees);
  return text;
}

std::string_view demuxerName(const AVFormatContext& context) {
  return context.iformat != nullptr ? context.iformat->name : "";
}

std::optional<std::string> entry(const AVDictionary* dictionary, const char* key) {
  const AVDictionaryEntry* found = av_dict_get(dictionary, key, nullptr, 0);
  if (found == nullptr) return std::nullopt;
  return found->value;
}

// Codecs that release 57 knew, but whose profiles and levels it did not report.
constexpr AVCodecID kCodecsWithoutProfile[] = {
    AV_CODEC_ID_AV1, AV_CODEC_ID_EAC3, AV_CODEC_ID_MJPEG, AV_CODEC_ID_PRORES, AV_CODEC_ID_TRUEHD,
};

bool release57KnowsProfiles(const AVStream& stream) {
  const AVCodecID codec = stream.codecpar->codec_id;
  const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec);
  return descriptor != nullptr && media::classicCodecNumber(descriptor->name) != media::kNoCodec &&
         std::find(std::begin(kCodecsWithoutProfile), std::end(kCodecsWithoutProfile), codec) ==
             std::end(kCodecsWithoutProfile);
}

// DTS:X and DTS:X IMAX extend master audio, which release 57 reported for them.
int release57Profile(AVCodecID codec, int profile) {
  constexpr int kDtsMasterAudio = 60;
  constexpr int kDtsX = 61;
  constexpr int kDtsXImax = 62;
  const bool isDtsX = codec == AV_CODEC_ID_DTS && (profile == kDtsX || profile == kDtsXImax);
  return isDtsX ? kDtsMasterAudio : profile;
}

// Since 6.1, streams that may be interlaced have twice their earlier base frame rate; the codec
// parameters keep the rate from the headers.
AVRational release57FrameRate(const AVFormatContext& context, const AVStream& stream) {
  const AVRational base = stream.r_frame_rate;
  const AVRational stated = release::statedFrameRate(*stream.codecpar);
  const bool doubles =
      stream.codecpar->codec_id == AV_CODEC_ID_MPEG1VIDEO || demuxerName(context) == kRawH264;
  const bool isDoubled = doubles && stated.num > 0 && stated.den > 0 && base.den > 0 &&
                         av_cmp_q(base, av_mul_q(stated, {2, 1})) == 0;
  return isDoubled ? stated : base;
}

StreamType typeOf(const AVStream& stream) {
  switch (stream.codecpar->codec_type) {
    case AVMEDIA_TYPE_VIDEO:
      return StreamType::kVideo;
    case AVMEDIA_TYPE_AUDIO:
      return StreamType::kAudio;
    case AVMEDIA_TYPE_SUBTITLE:
      return StreamType::kSubtitle;
    default:
      return StreamType::kOther;
  }
}

int classicCodec(const AVStream& stream) {
  const AVCodecDescriptor* descriptor = avcodec_descriptor_get(stream.codecpar->codec_id);
  return descriptor != nullptr ? media::classicCodecNumber(descriptor->name) : media::kNoCodec;
}

std::string codecTagText(std::uint32_t tag) {
  char text[AV_FOURCC_MAX_STRING_SIZE] = {};
  return av_fourcc_make_string(text, tag);
}

std::vector<std::uint8_t> extraDataOf(const AVCodecParameters& parameters) {
  if (parameters.extradata == nullptr || parameters.extradata_size <= 0) return {};
  return {parameters.extradata, parameters.extradata + parameters.extradata_size};
}

std::optional<int> known(int number) {
  if (number == media::kUnknownLevel) return std::nullopt;
  return number;
}

std::string pixelFormatOf(const AVCodecParameters& parameters) {
  const char* name = av_get_pix_fmt_name(static_cast<AVPixelFormat>(parameters.format));
  return name != nullptr ? name : "";
}

bool isEquirectangular(const AVStream& stream) {
  for (int i = 0; i < release::sideDataCount(stream); ++i) {
    const release::SideData data = release::sideData(stream, i);
    if (data.type != AV_PKT_DATA_SPHERICAL || data.size < sizeof(AVSphericalProjection)) continue;
    AVSphericalProjection projection = AV_SPHERICAL_CUBEMAP;
    std::memcpy(&projection, data.data + offsetof(AVSphericalMapping, projection),
                sizeof projection);
    if (projection == AV_SPHERICAL_EQUIRECTANGULAR) return true;
  }
  return false;
}

// The "rotate" entry, or for MP4 and QuickTime the angle of the display matrix.
std::optional<std::string> rotationOf(const AVFormatContext& context, const AVStream& stream) {
  if (auto stored = entry(stream.metadata, "rotate")) return stored;
  // Release 57 made the entry only for this family, so matrices of other containers are ignored.
  if (demuxerName(context) != kMp4) return std::nullopt;
  for (int i = 0; i < release::sideDataCount(stream); ++i) {
    const release::SideData data = release::sideData(stream, i);
    std::int32_t matrix[9];
    if (data.type != AV_PKT_DATA_DISPLAYMATRIX || data.size < sizeof matrix) continue;
    std::memcpy(matrix, data.data, sizeof matrix);
    return rotateOfMatrix(matrix);
  }
  return std::nullopt;
}

void readPicture(AVFormatContext& context, AVStream& stream, media::Stream& value) {
  const AVCodecParameters& parameters = *stream.codecpar;
  const auto grid = release::tileGridOf(context, stream);
  value.width = grid ? grid->width : parameters.width;
  value.height = grid ? grid->height : parameters.height;
  value.pixelFormat = pixelFormatOf(parameters);
  value.frameRate = rationalOf(release57FrameRate(context, stream));
  value.sampleAspect = rationalOf(av_guess_sample_aspect_ratio(&context, &stream, nullptr));
  value.isAttachedPicture = isCover(stream);
  value.isEquirectangular = isEquirectangular(stream);
  value.rotation = rotationOf(context, stream);
  value.creationTime = entry(stream.metadata, "creation_time");
}

media::Stream streamOf(AVFormatContext& context, AVStream& stream) {
  const AVCodecParameters& parameters = *stream.codecpar;
  media::Stream value;
  value.type = typeOf(stream);
  value.index = stream.index;
  value.id = stream.id;
  value.codec = classicCodec(stream);
  value.codecName = avcodec_get_name(parameters.codec_id);
  value.codecTag = parameters.codec_tag;
  value.codecTagText = codecTagText(parameters.codec_tag);
  value.extraData = extraDataOf(parameters);
  if (release57KnowsProfiles(stream)) {
    value.profile = known(release57Profile(parameters.codec_id, parameters.profile));
    value.level = known(parameters.level);
  }
  value.bitRate = parameters.bit_rate;
  readPicture(context, stream, value);
  value.sampleRate = parameters.sample_rate;
  value.channels = release::channels(parameters);
  value.bitsPerSample = parameters.bits_per_coded_sample;
  value.timeBase = rationalOf(stream.time_base);
  if (stream.start_time != AV_NOPTS_VALUE) value.startTime = stream.start_time;
  return value;
}

}  // namespace

media::Rational rationalOf(const AVRational& value) {
  return {value.num, value.den};
}

media::Container containerOf(AVFormatContext& context) {
  media::Container container;
  container.demuxer = demuxerName(context);
  container.bitRate = context.bit_rate;
  container.duration = context.duration;
  for (unsigned i = 0; i < context.nb_streams; ++i) {
    AVStream& stream = *context.streams[i];
    const auto grid = release::tileGridOf(context, stream);
    if (!grid || grid->firstTile == &stream) container.streams.push_back(streamOf(context, stream));
  }
  const AVDictionaryEntry* next = nullptr;
  while (container.tags.size() < media::kMostContainerTags &&
         (next = av_dict_get(context.metadata, "", next, AV_DICT_IGNORE_SUFFIX)) != nullptr)
    container.tags.emplace_back(next->key, next->value);
  return container;
}

}  // namespace kolum::ffmpeg
