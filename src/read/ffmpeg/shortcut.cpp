#include "read/ffmpeg/shortcut.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

#include "media/budget.h"
#include "media/container.h"
#include "read/ffmpeg/context.h"
#include "read/ffmpeg/ffmpeg.h"
#include "read/ffmpeg/formats.h"
#include "read/ffmpeg/header_decoder.h"
#include "read/ffmpeg/owned_packet.h"
#include "read/ffmpeg/source_reader.h"  // for the context's destructor
#include "read/ffmpeg/values.h"
#include "read/headers/h264.h"
#include "read/headers/picture.h"

namespace kolum::ffmpeg {

namespace {

using Bytes = std::span<const std::uint8_t>;

// The first packet of each stream is among these, or not worth waiting for.
constexpr int kMostPackets = 500;
// FFmpeg looks at the second packet of a transport stream's streams, too, for their frame rate.
constexpr int kPacketsOfTransportStream = 2;

bool isDemuxer(const AVFormatContext& context, std::string_view name) {
  return context.iformat->name == name;
}

Bytes bytesOf(const AVPacket& packet) {
  if (packet.data == nullptr || packet.size <= 0) return {};
  return {packet.data, static_cast<std::size_t>(packet.size)};
}

Bytes extraDataOf(const AVStream& stream) {
  const AVCodecParameters& parameters = *stream.codecpar;
  if (parameters.extradata == nullptr || parameters.extradata_size <= 0) return {};
  return {parameters.extradata, static_cast<std::size_t>(parameters.extradata_size)};
}

// Whether a packet can be what its stream's parameters say.
bool isExpected(const AVStream& stream, Bytes packet) {
  constexpr std::uint8_t kConfigurationVersion = 1;
  if (stream.codecpar->codec_id == AV_CODEC_ID_VP9)
    return headers::readVp9KeyFrame(packet).has_value();
  const Bytes extraData = extraDataOf(stream);
  const bool hasConfiguration = stream.codecpar->codec_id == AV_CODEC_ID_H264 &&
                                !extraData.empty() && extraData[0] == kConfigurationVersion;
  return hasConfiguration ? headers::isPlainPicture(packet, extraData) : !packet.empty();
}

bool hasFrameRate(const AVStream& stream) {
  return stream.r_frame_rate.num != 0 && stream.avg_frame_rate.num != 0;
}

// Whether the container states a size, and not this one.
bool isOfAnotherSize(const AVCodecParameters& parameters, int width, int height) {
  return parameters.width != 0 && (parameters.width != width || parameters.height != height);
}

// Numbers that FFmpeg has no name for count as not stated.
ColourParameters coloursOf(const headers::H264Parameters& sps) {
  ColourParameters colours = {.isFullRange = sps.isFullRange};
  if (const auto& stated = sps.colours) {
    colours.primaries =
        stated->primaries < AVCOL_PRI_NB ? stated->primaries : AVCOL_PRI_UNSPECIFIED;
    colours.transfer = stated->transfer < AVCOL_TRC_NB ? stated->transfer : AVCOL_TRC_UNSPECIFIED;
    colours.matrix = stated->matrix < AVCOL_SPC_NB ? stated->matrix : AVCOL_SPC_UNSPECIFIED;
  }
  if (sps.chromaLocation && *sps.chromaLocation < AVCHROMA_LOC_NB - 1)
    colours.chromaLocation = *sps.chromaLocation + 1;
  return colours;
}

// In the order of VP9's numbers.
constexpr AVColorSpace kVp9Matrices[] = {
    AVCOL_SPC_UNSPECIFIED, AVCOL_SPC_BT470BG,    AVCOL_SPC_BT709,    AVCOL_SPC_SMPTE170M,
    AVCOL_SPC_SMPTE240M,   AVCOL_SPC_BT2020_NCL, AVCOL_SPC_RESERVED, AVCOL_SPC_RGB};

void applyColours(const ColourParameters& colours, AVCodecParameters& parameters) {
  if (colours.isFullRange)
    parameters.color_range = *colours.isFullRange ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
  if (colours.primaries)
    parameters.color_primaries = static_cast<AVColorPrimaries>(*colours.primaries);
  if (colours.transfer)
    parameters.color_trc = static_cast<AVColorTransferCharacteristic>(*colours.transfer);
  if (colours.matrix) parameters.color_space = static_cast<AVColorSpace>(*colours.matrix);
  if (colours.chromaLocation)
    parameters.chroma_location = static_cast<AVChromaLocation>(*colours.chromaLocation);
}

PictureParameters parametersOf(const headers::H264Parameters& sps) {
  return {.width = sps.width,
          .height = sps.height,
          .pixelFormat = av_get_pix_fmt(sps.pixelFormat),
          .profile = sps.profile,
          .level = sps.level,
          .sampleAspect = sps.sampleAspect,
          .heldBackPictures = sps.heldBackPictures.value_or(0),
          .ticksPerSecond = sps.ticksPerSecond,
          .unitTicks = sps.unitTicks,
          .colours = coloursOf(sps)};
}

// Larger than any level of the standard allows. Nobody encodes such pictures: the header counts,
// whatever follows.
template <typename Picture>
bool isBeyondH264(const Picture& picture) {
  constexpr std::int64_t kLargestFrame = std::int64_t{139264} * 16 * 16;
  return std::int64_t{picture.width} * picture.height > kLargestFrame;
}

// Decoding it would take more memory than a call may use.
bool isLarge(int width, int height) {
  return std::int64_t{width} * height > media::budget::kDecodedPixels;
}

bool isEncrypted(const AVStream& stream) {
  return stream.codecpar->codec_tag == MKTAG('e', 'n', 'c', 'v') ||
         stream.codecpar->codec_tag == MKTAG('d', 'r', 'm', 'i');
}

// Those of VP9's containers that are known to give the same packets to every reader.
bool isVp9Container(const AVFormatContext& context) {
  constexpr std::string_view kIvf = "ivf";
  return isDemuxer(context, media::kDemuxerMatroska) || isDemuxer(context, media::kDemuxerMp4) ||
         isDemuxer(context, kIvf);
}

// In microseconds.
std::optional<std::int64_t> timeOf(const AVStream& stream, const AVPacket& packet) {
  if (packet.dts == AV_NOPTS_VALUE) return std::nullopt;
  return av_rescale_q(packet.dts, stream.time_base, {1, AV_TIME_BASE});
}

// While FFmpeg waits for a stream that begins later than others, it measures these for longer.
bool isLate(std::optional<std::int64_t> start, std::optional<std::int64_t> time) {
  return start && time && *time / AV_TIME_BASE > *start / AV_TIME_BASE + 1;
}

AVCodecID codecOf(headers::PictureFormat format) {
  switch (format) {
    case headers::PictureFormat::kPng:
      return AV_CODEC_ID_PNG;
    case headers::PictureFormat::kJpeg:
      return AV_CODEC_ID_MJPEG;
    case headers::PictureFormat::kGif:
      return AV_CODEC_ID_GIF;
    case headers::PictureFormat::kBmp:
      return AV_CODEC_ID_BMP;
    case headers::PictureFormat::kTiff:
      return AV_CODEC_ID_TIFF;
    case headers::PictureFormat::kWebp:
      return AV_CODEC_ID_WEBP;
  }
  return AV_CODEC_ID_NONE;
}

// The parameter sets that a packet of a byte stream carries, as FFmpeg keeps them.
std::vector<std::uint8_t> parameterSetsOf(const AVStream& stream, const AVPacket& packet) {
  std::vector<std::uint8_t> sets;
  const AVBitStreamFilter* filter = av_bsf_get_by_name("extract_extradata");
  AVBSFContext* context = nullptr;
  if (filter == nullptr || av_bsf_alloc(filter, &context) < 0) return sets;
  const OwnedPacket copy(av_packet_clone(&packet));
  if (copy != nullptr && avcodec_parameters_copy(context->par_in, stream.codecpar) >= 0 &&
      av_bsf_init(context) >= 0 && av_bsf_send_packet(context, copy.get()) >= 0 &&
      av_bsf_receive_packet(context, copy.get()) >= 0) {
    const Bytes found = release::newExtraData(*copy);
    sets.assign(found.begin(), found.end());
  }
  av_bsf_free(&context);
  return sets;
}

}  // namespace

Shortcut::Shortcut(AVFormatContext& context, const media::Source& source, Shortcuts allowed)
    : context_(context), source_(source), allowed_(allowed), streamCount_(context.nb_streams) {}

Shortcut::~Shortcut() {
  for (AVDictionary*& each : options_) av_dict_free(&each);
}

AVDictionary** Shortcut::options() {
  return options_.empty() ? nullptr : options_.data();
}

void Shortcut::fill() {
  if (allowed_ == Shortcuts::kAll) lookAhead();
  bool isH264Known = true;
  std::vector<FilledStream> found;
  for (unsigned i = 0; i < streamCount_; ++i) {
    AVStream& stream = *context_.streams[i];
    if (stream.codecpar->codec_type != AVMEDIA_TYPE_VIDEO) continue;
    if (const auto picture = pictureOf(stream))
      found.push_back({i, *picture, hasFrameRate(stream)});
    else if (stream.codecpar->codec_id == AV_CODEC_ID_H264)
      isH264Known = false;
    else
      fillParameterSets(stream);
  }
  options_.resize(streamCount_, nullptr);
  // The decoder is left out for all streams or for none.
  for (const FilledStream& each : found)
    if (isH264Known || !isH264(each.index)) apply(each);
}

bool Shortcut::isH264(unsigned index) const {
  return context_.streams[index]->codecpar->codec_id == AV_CODEC_ID_H264;
}

// Streams whose first pictures say more than their containers.
std::set<int> Shortcut::streamsToLookAt() const {
  const bool isTransportStream = isDemuxer(context_, media::kDemuxerMpegTs);
  const bool mayHaveVp9 = isVp9Container(context_);
  std::set<int> wanted;
  for (unsigned i = 0; i < streamCount_; ++i) {
    const AVStream& stream = *context_.streams[i];
    const AVCodecID codec = stream.codecpar->codec_id;
    const bool lacksSets =
        (codec == AV_CODEC_ID_H264 || codec == AV_CODEC_ID_HEVC) && extraDataOf(stream).empty();
    if ((isTransportStream && lacksSets) || (mayHaveVp9 && codec == AV_CODEC_ID_VP9))
      wanted.insert(stream.index);
  }
  return wanted;
}

// Reads packets in a context of its own, until VISIT has seen enough.
template <typename Visit>
void Shortcut::readAhead(Visit visit) const {
  const auto ahead = openContext(source_, context_.iformat->name);
  const OwnedPacket packet(av_packet_alloc());
  if (!ahead || packet == nullptr || ahead->format->nb_streams != streamCount_) return;
  for (int i = 0; i < kMostPackets && av_read_frame(ahead->format.get(), packet.get()) >= 0; ++i) {
    const bool hasEnough = visit(*ahead->format->streams[packet->stream_index], *packet);
    av_packet_unref(packet.get());
    if (hasEnough) return;
  }
}

void Shortcut::lookAhead() {
  std::set<int> wanted = streamsToLookAt();
  if (wanted.empty()) return;
  std::optional<std::int64_t> start;
  readAhead([&](const AVStream& stream, const AVPacket& packet) {
    const auto time = timeOf(stream, packet);
    if (!start) start = time;
    if (wanted.erase(stream.index) > 0 && !isLate(start, time))
      firstPackets_[stream.index] = firstPacket(stream, packet);
    return wanted.empty();
  });
}

Shortcut::FirstPacket Shortcut::firstPacket(const AVStream& stream, const AVPacket& packet) {
  FirstPacket first;
  switch (stream.codecpar->codec_id) {
    case AV_CODEC_ID_H264:
      first.h264 = headers::readSps(headers::spsOfByteStream(bytesOf(packet)));
      break;
    case AV_CODEC_ID_HEVC:
      first.parameterSets = parameterSetsOf(stream, packet);
      break;
    case AV_CODEC_ID_VP9:
      // Side data may change what the decoder is given.
      if (packet.side_data_elems == 0) first.vp9 = headers::readVp9KeyFrame(bytesOf(packet));
      break;
    default:
      break;
  }
  return first;
}

std::optional<PictureParameters> Shortcut::pictureOf(const AVStream& stream) const {
  const bool isH264Video = stream.codecpar->codec_id == AV_CODEC_ID_H264 && !isCover(stream);
  auto picture = isH264Video ? h264Picture(stream) : vp9Picture(stream);
  if (isH264Video && picture && allowed_ != Shortcuts::kAll && !isBeyondH264(*picture))
    picture.reset();
  if (!isH264Video && !picture) picture = stillPicture(stream);
  if (!picture) picture = largePicture(stream);
  // Extreme aspects: only some of FFmpeg's checks refuse them.
  if (picture && av_image_check_sar(static_cast<unsigned>(picture->width),
                                    static_cast<unsigned>(picture->height),
                                    {picture->sampleAspect.num, picture->sampleAspect.den}) < 0)
    return std::nullopt;
  return picture;
}

std::optional<PictureParameters> Shortcut::h264Picture(const AVStream& stream) const {
  const auto ahead = firstPackets_.find(stream.index);
  const auto found = ahead != firstPackets_.end()
                         ? ahead->second.h264
                         : headers::readSps(headers::spsOfConfiguration(extraDataOf(stream)));
  if (!found || (isEncrypted(stream) && !isBeyondH264(*found))) return std::nullopt;
  if (isBeyondH264(*found)) return parametersOf(*found);
  const bool hasDecodingTimes = isDemuxer(context_, media::kDemuxerMp4);
  if (!found->heldBackPictures && !hasDecodingTimes) return std::nullopt;
  // Without the decoder, FFmpeg makes up no decoding times, and measures no frame rate by them.
  if (isDemuxer(context_, media::kDemuxerMatroska) &&
      (!hasFrameRate(stream) || context_.duration <= 0))
    return std::nullopt;
  if (isOfAnotherSize(*stream.codecpar, found->width, found->height)) return std::nullopt;
  return parametersOf(*found);
}

// VP9's decoder says nothing else, and holds back no pictures. (VP8's says nothing at all once the
// container has stated the size, so FFmpeg does not ask it.)
std::optional<PictureParameters> Shortcut::vp9Picture(const AVStream& stream) const {
  const auto ahead = firstPackets_.find(stream.index);
  if (ahead == firstPackets_.end() || !ahead->second.vp9 || isCover(stream) || isEncrypted(stream))
    return std::nullopt;
  const headers::Vp9Parameters& found = *ahead->second.vp9;
  const AVCodecParameters& parameters = *stream.codecpar;
  if (parameters.width != found.width || parameters.height != found.height) return std::nullopt;
  return PictureParameters{
      .width = found.width,
      .height = found.height,
      .pixelFormat = av_get_pix_fmt(found.pixelFormat),
      .profile = found.profile,
      .level = parameters.level,
      .sampleAspect = rationalOf(parameters.sample_aspect_ratio),
      .colours = {.isFullRange = found.isFullRange, .matrix = kVp9Matrices[found.colourSpace]}};
}

std::optional<PictureParameters> Shortcut::stillPicture(const AVStream& stream) const {
  std::optional<headers::Picture> found;
  if (isCover(stream) && stream.attached_pic.data != nullptr)
    found = headers::readPicture(bytesOf(stream.attached_pic), stream.attached_pic.size);
  else if (isStillPictureFile(context_))
    found = headers::readPicture(source_);
  if (!found || codecOf(found->format) != stream.codecpar->codec_id) return std::nullopt;
  // FFmpeg takes a JPEG picture that is lower than announced for half of an interlaced one.
  if (isOfAnotherSize(*stream.codecpar, found->width, found->height)) return std::nullopt;
  return PictureParameters{.width = found->width,
                           .height = found->height,
                           .pixelFormat = av_get_pix_fmt(std::string(found->pixelFormat).c_str()),
                           .sampleAspect = found->sampleAspect};
}

// Asks the decoder about pictures that it may not decode.
std::optional<PictureParameters> Shortcut::largePicture(const AVStream& stream) const {
  const AVCodecParameters& parameters = *stream.codecpar;
  std::optional<PictureParameters> found;
  if (isCover(stream) && stream.attached_pic.data != nullptr)
    found = decodeHeader(stream, stream.attached_pic);
  else if (isLarge(parameters.width, parameters.height) || isStillPictureFile(context_))
    found = decodeFirstHeader(stream);
  return found && isLarge(found->width, found->height) ? found : std::nullopt;
}

std::optional<PictureParameters> Shortcut::decodeFirstHeader(const AVStream& wanted) const {
  std::optional<PictureParameters> found;
  readAhead([&](const AVStream& stream, const AVPacket& packet) {
    if (stream.index != wanted.index) return false;
    found = decodeHeader(stream, packet);
    return true;
  });
  return found;
}

// With parameter sets, the HEVC decoder knows its pictures without decoding any.
void Shortcut::fillParameterSets(AVStream& stream) {
  const auto ahead = firstPackets_.find(stream.index);
  if (ahead == firstPackets_.end() || ahead->second.parameterSets.empty()) return;
  const std::vector<std::uint8_t>& sets = ahead->second.parameterSets;
  auto* copy = static_cast<std::uint8_t*>(av_mallocz(sets.size() + AV_INPUT_BUFFER_PADDING_SIZE));
  if (copy == nullptr) return;
  std::memcpy(copy, sets.data(), sets.size());
  stream.codecpar->extradata = copy;
  stream.codecpar->extradata_size = static_cast<int>(sets.size());
  expectedPackets_[stream.index] = kPacketsOfTransportStream;
}

void Shortcut::apply(const FilledStream& filled) {
  const PictureParameters& picture = filled.picture;
  AVCodecParameters& parameters = *context_.streams[filled.index]->codecpar;
  parameters.width = picture.width;
  parameters.height = picture.height;
  parameters.format = picture.pixelFormat;
  parameters.profile = picture.profile;
  parameters.level = picture.level;
  parameters.sample_aspect_ratio = {picture.sampleAspect.num, picture.sampleAspect.den};
  applyColours(picture.colours, parameters);
  parameters.video_delay = std::max(parameters.video_delay, picture.heldBackPictures);
  filled_.push_back(filled);
  if (isH264(filled.index)) leaveOutH264(filled.index);
  if (parameters.codec_id == AV_CODEC_ID_VP9 && !isLarge(picture.width, picture.height))
    expectedPackets_[static_cast<int>(filled.index)] = 1;
}

void Shortcut::leaveOutH264(unsigned index) {
  constexpr int kSilent = 100;
  const bool isTransportStream = isDemuxer(context_, media::kDemuxerMpegTs);
  if (!isBeyondH264(filled_.back().picture))
    expectedPackets_[static_cast<int>(index)] = isTransportStream ? kPacketsOfTransportStream : 1;
  // FFmpeg would log that the decoder is not allowed, with the whole list of those that are.
  av_dict_set_int(&options_[index], "log_level_offset", kSilent, 0);
  av_freep(&context_.codec_whitelist);
  context_.codec_whitelist = av_strdup(allowedDecodersButH264());
  // Decoding times that never come are not waited for.
  if (isDemuxer(context_, media::kDemuxerMatroska)) context_.max_ts_probe = 1;
}

bool Shortcut::isSound(FirstPictures* pictures) {
  if (filled_.empty() && expectedPackets_.empty()) return true;
  if (mayHaveEndedEarly()) return false;
  for (unsigned i = streamCount_; i < context_.nb_streams; ++i)
    if (context_.streams[i]->codecpar->codec_type == AVMEDIA_TYPE_VIDEO) return false;
  return std::all_of(filled_.begin(), filled_.end(),
                     [this](const FilledStream& each) { return keepsPromises(each); }) &&
         hasExpectedPackets(pictures);
}

// At the end of a file, FFmpeg gets the last packets of all streams at once. Without a decoder that
// wants more, it is content before it has looked at those of the later audio streams.
bool Shortcut::mayHaveEndedEarly() const {
  const auto audioStreams = std::count_if(
      context_.streams, context_.streams + context_.nb_streams,
      [](const AVStream* stream) { return stream->codecpar->codec_type == AVMEDIA_TYPE_AUDIO; });
  return audioStreams > 1 && avio_feof(context_.pb) != 0;
}

// Whether FFmpeg found nothing else about a stream by its other ways.
bool Shortcut::keepsPromises(const FilledStream& filled) const {
  const AVStream& stream = *context_.streams[filled.index];
  const AVCodecParameters& parameters = *stream.codecpar;
  const PictureParameters& picture = filled.picture;
  if (parameters.width != picture.width || parameters.height != picture.height ||
      parameters.profile != picture.profile || parameters.level != picture.level)
    return false;
  if (!isH264(filled.index) || filled.hadFrameRate || isBeyondH264(picture)) return true;
  const AVRational rate = stream.r_frame_rate;
  // The decoder knows half of the rate at which the clock ticks, and FFmpeg takes it where it could
  // measure nothing but the time base or that clock.
  const bool isTimeBase = rate.num == stream.time_base.den && rate.den == stream.time_base.num;
  const bool isClock =
      std::int64_t{rate.num} * picture.unitTicks == std::int64_t{rate.den} * picture.ticksPerSecond;
  return !isTimeBase && !isClock;
}

// Whether the first packets are what the headers promised. Takes them from those that reading the
// stream information left behind, and from nowhere else: FFmpeg gives up after some seconds or
// megabytes, and knows nothing about a stream that begins later.
bool Shortcut::hasExpectedPackets(FirstPictures* pictures) {
  if (expectedPackets_.empty()) return true;  // others read on where FFmpeg has stopped
  // FFmpeg looks at the end of a transport stream, and then reads it from its beginning again.
  const bool areLeft = !isDemuxer(context_, media::kDemuxerMpegTs);
  auto left = expectedPackets_;
  const OwnedPacket packet(av_packet_alloc());
  const std::int64_t position = avio_tell(context_.pb);
  // Wherever it reads on, it leaves the beginning.
  if (packet == nullptr || (areLeft && avio_seek(context_.pb, 0, SEEK_SET) != 0)) return false;
  for (int i = 0; !left.empty(); ++i) {
    if (i >= kMostPackets || av_read_frame(&context_, packet.get()) < 0) return false;
    if (areLeft && avio_tell(context_.pb) != 0) return false;
    if (pictures != nullptr) pictures->look(*context_.streams[packet->stream_index], *packet);
    const auto found = left.find(packet->stream_index);
    const bool isWanted = found != left.end();
    const bool isGood =
        !isWanted || isExpected(*context_.streams[packet->stream_index], bytesOf(*packet));
    if (isWanted && --found->second == 0) left.erase(found);
    av_packet_unref(packet.get());
    if (!isGood) return false;
  }
  // Whoever looks at pictures may read on.
  return pictures == nullptr || !areLeft || avio_seek(context_.pb, position, SEEK_SET) >= 0;
}

}  // namespace kolum::ffmpeg
