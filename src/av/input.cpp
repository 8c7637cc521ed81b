#include "av/input.h"

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "av/ffmpeg.h"
#include "av/file_demuxers.h"
#include "media/levels.h"

namespace kolum::av {

namespace {

Rational fromFfmpeg(AVRational value) {
  return {value.num, value.den};
}

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

std::optional<std::string> entry(const AVDictionary* dictionary, const char* key, int flags) {
  const AVDictionaryEntry* found = av_dict_get(dictionary, key, nullptr, flags);
  if (found == nullptr) return std::nullopt;
  return found->value;
}

// Codecs whose profiles and levels release 57 did not report, although it knew the codecs.
constexpr AVCodecID kCodecsWithoutProfile[] = {
    AV_CODEC_ID_AV1, AV_CODEC_ID_EAC3, AV_CODEC_ID_MJPEG, AV_CODEC_ID_PRORES, AV_CODEC_ID_TRUEHD,
};

bool release57KnowsProfiles(const AVStream& stream) {
  const AVCodecID codec = stream.codecpar->codec_id;
  const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec);
  return descriptor != nullptr && classicCodecNumber(descriptor->name) != kNoCodec &&
         std::find(std::begin(kCodecsWithoutProfile), std::end(kCodecsWithoutProfile), codec) ==
             std::end(kCodecsWithoutProfile);
}

// DTS:X and DTS:X IMAX extend the master audio that release 57 reported for them.
int release57Profile(AVCodecID codec, int profile) {
  constexpr int kDtsMasterAudio = 60;
  constexpr int kDtsX = 61;
  constexpr int kDtsXImax = 62;
  const bool isDtsX = codec == AV_CODEC_ID_DTS && (profile == kDtsX || profile == kDtsXImax);
  return isDtsX ? kDtsMasterAudio : profile;
}

// From 6.1 on, streams that may be interlaced have twice the base frame rate that they had; the
// codec parameters keep the rate that the headers state.
AVRational release57FrameRate(const AVFormatContext& context, const AVStream& stream) {
  const AVRational base = stream.r_frame_rate;
  const AVRational stated = release::statedFrameRate(*stream.codecpar);
  const bool doubles = stream.codecpar->codec_id == AV_CODEC_ID_MPEG1VIDEO ||
                       demuxerName(context) == kDemuxerRawH264;
  const bool isDoubled = doubles && stated.num > 0 && stated.den > 0 && base.den > 0 &&
                         av_cmp_q(base, av_mul_q(stated, {2, 1})) == 0;
  return isDoubled ? stated : base;
}

// For a context that is not opened.
struct Freer {
  void operator()(AVFormatContext* context) const { avformat_free_context(context); }
};

// Frees the context when it fails.
bool openContext(AVFormatContext*& context, const std::string& url, ReadLimit* limit) {
  const ReadLimit::Scope limited(limit);
  return avformat_open_input(&context, url.c_str(), nullptr, nullptr) == 0;
}

// A name without a leading "/" or "." may look like a URL ("http:x.mp4"); what exists is a file.
std::string urlOfExistingFile(const char* path) {
  return *path == '/' || *path == '.' ? path : std::string("file:") + path;
}

}  // namespace

void registerFormats() {
  release::registerFormats();
}

Stream::Stream(AVFormatContext* context, AVStream* stream) : context_(context), stream_(stream) {
  if (const auto grid = release::tileGridOf(*context, *stream))
    size_ = {grid->width, grid->height};
  else
    size_ = {stream->codecpar->width, stream->codecpar->height};
}

MediaType Stream::type() const {
  switch (stream_->codecpar->codec_type) {
    case AVMEDIA_TYPE_VIDEO:
      return MediaType::kVideo;
    case AVMEDIA_TYPE_AUDIO:
      return MediaType::kAudio;
    case AVMEDIA_TYPE_SUBTITLE:
      return MediaType::kSubtitle;
    default:
      return MediaType::kOther;
  }
}

int Stream::index() const {
  return stream_->index;
}
int Stream::id() const {
  return stream_->id;
}

int Stream::classicCodec() const {
  const AVCodecDescriptor* descriptor = avcodec_descriptor_get(stream_->codecpar->codec_id);
  return descriptor != nullptr ? classicCodecNumber(descriptor->name) : kNoCodec;
}

std::string_view Stream::codecName() const {
  return avcodec_get_name(stream_->codecpar->codec_id);
}

std::uint32_t Stream::codecTag() const {
  return stream_->codecpar->codec_tag;
}

std::string Stream::codecTagText() const {
  char text[AV_FOURCC_MAX_STRING_SIZE] = {};
  return av_fourcc_make_string(text, stream_->codecpar->codec_tag);
}

std::span<const std::uint8_t> Stream::extraData() const {
  const AVCodecParameters& parameters = *stream_->codecpar;
  if (parameters.extradata == nullptr || parameters.extradata_size <= 0) return {};
  return {parameters.extradata, static_cast<std::size_t>(parameters.extradata_size)};
}

int Stream::profile() const {
  if (!release57KnowsProfiles(*stream_)) return media::kUnknownLevel;
  return release57Profile(stream_->codecpar->codec_id, stream_->codecpar->profile);
}
int Stream::level() const {
  return release57KnowsProfiles(*stream_) ? stream_->codecpar->level : media::kUnknownLevel;
}
std::int64_t Stream::bitRate() const {
  return stream_->codecpar->bit_rate;
}
std::string_view Stream::pixelFormatName() const {
  const char* name = av_get_pix_fmt_name(static_cast<AVPixelFormat>(stream_->codecpar->format));
  return name != nullptr ? name : "";
}
int Stream::sampleRate() const {
  return stream_->codecpar->sample_rate;
}
int Stream::channels() const {
  return release::channels(*stream_->codecpar);
}
int Stream::bitsPerCodedSample() const {
  return stream_->codecpar->bits_per_coded_sample;
}
Rational Stream::timeBase() const {
  return fromFfmpeg(stream_->time_base);
}
Rational Stream::realFrameRate() const {
  return fromFfmpeg(release57FrameRate(*context_, *stream_));
}
std::int64_t Stream::startTime() const {
  return stream_->start_time;
}

Rational Stream::sampleAspect() const {
  return fromFfmpeg(av_guess_sample_aspect_ratio(context_, stream_, nullptr));
}

bool Stream::isAttachedPicture() const {
  return (stream_->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
}

bool Stream::isEquirectangular() const {
  for (int i = 0; i < release::sideDataCount(*stream_); ++i) {
    const release::SideData data = release::sideData(*stream_, i);
    if (data.type != AV_PKT_DATA_SPHERICAL || data.size < sizeof(AVSphericalProjection)) continue;
    AVSphericalProjection projection = AV_SPHERICAL_CUBEMAP;
    std::memcpy(&projection, data.data + offsetof(AVSphericalMapping, projection),
                sizeof projection);
    if (projection == AV_SPHERICAL_EQUIRECTANGULAR) return true;
  }
  return false;
}

std::optional<std::string> Stream::tag(const char* key) const {
  return entry(stream_->metadata, key, 0);
}

std::optional<std::string> Stream::rotate() const {
  if (auto stored = tag("rotate")) return stored;
  // Release 57 made the entry for this family alone, so matrices of other containers say nothing.
  if (demuxerName(*context_) != kDemuxerMp4) return std::nullopt;
  for (int i = 0; i < release::sideDataCount(*stream_); ++i) {
    const release::SideData data = release::sideData(*stream_, i);
    std::int32_t matrix[9];
    if (data.type != AV_PKT_DATA_DISPLAYMATRIX || data.size < sizeof matrix) continue;
    std::memcpy(matrix, data.data, sizeof matrix);
    return rotateOfMatrix(matrix);
  }
  return std::nullopt;
}

void Input::Closer::operator()(AVFormatContext* context) const {
  avformat_close_input(&context);
}

Input::Input(AVFormatContext* context, std::unique_ptr<ReadLimit> limit)
    : readLimit_(std::move(limit)), context_(context) {
  listStreams();
}

std::optional<Input> Input::open(const char* path) {
  struct stat status = {};
  if (stat(path, &status) != 0) return std::nullopt;
  if (!S_ISREG(status.st_mode) && !S_ISBLK(status.st_mode)) return std::nullopt;
  const std::string url = urlOfExistingFile(path);
  const char* demuxers = fileDemuxers();
  std::unique_ptr<AVFormatContext, Freer> context(avformat_alloc_context());
  if (context == nullptr) return std::nullopt;
  context->format_whitelist = av_strdup(demuxers);
  if (context->format_whitelist == nullptr) return std::nullopt;
  auto limit = std::make_unique<ReadLimit>(context.get(), path);
  return openWith(context.release(), url, std::move(limit));
}

std::optional<Input> Input::openWithStreams(const char* path) {
  registerFormats();
  auto input = open(path);
  if (input) input->readStreamInfo();
  return input;
}

std::optional<Input> Input::openUrl(const char* url) {
  struct stat status = {};
  return stat(url, &status) == 0 ? open(url) : openWith(nullptr, url, nullptr);
}

std::optional<Input> Input::openWith(AVFormatContext* context, const std::string& url,
                                     std::unique_ptr<ReadLimit> limit) {
  if (!openContext(context, url, limit.get())) return std::nullopt;
  return Input(context, std::move(limit));
}

void Input::readStreamInfo() {
  const ReadLimit::Scope limited(readLimit_.get());
  // The result does not count: what was found before an error is still worth reporting.
  avformat_find_stream_info(context_.get(), nullptr);
  listStreams();
}

void Input::listStreams() {
  streams_.clear();
  for (unsigned i = 0; i < context_->nb_streams; ++i) {
    AVStream* stream = context_->streams[i];
    const auto grid = release::tileGridOf(*context_, *stream);
    if (!grid || grid->firstTile == stream) streams_.emplace_back(context_.get(), stream);
  }
}

const Stream* Input::firstStream(MediaType type) const {
  for (const Stream& stream : streams_)
    if (stream.type() == type) return &stream;
  return nullptr;
}

std::string_view Input::demuxer() const {
  return demuxerName(*context_);
}
std::int64_t Input::bitRate() const {
  return context_->bit_rate;
}
std::int64_t Input::duration() const {
  return context_->duration;
}

std::optional<std::string> Input::tagWithPrefix(const char* prefix) const {
  return entry(context_->metadata, prefix, AV_DICT_IGNORE_SUFFIX);
}

std::vector<std::pair<std::string, std::string>> Input::tags() const {
  std::vector<std::pair<std::string, std::string>> all;
  const AVDictionaryEntry* next = nullptr;
  while ((next = av_dict_get(context_->metadata, "", next, AV_DICT_IGNORE_SUFFIX)) != nullptr)
    all.emplace_back(next->key, next->value);
  return all;
}

Rational reduce(std::int64_t num, std::int64_t den, std::int64_t max) {
  Rational result;
  av_reduce(&result.num, &result.den, num, den, max);
  return result;
}

Rational timeBase(const AVStream& stream) {
  return fromFfmpeg(stream.time_base);
}

}  // namespace kolum::av
