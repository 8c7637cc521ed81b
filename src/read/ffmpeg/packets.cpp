#include "read/ffmpeg/packets.h"

#include <algorithm>
#include <new>

#include "media/container.h"
#include "read/ffmpeg/ffmpeg.h"

namespace kolum::ffmpeg {

namespace {

// The Ogg demuxer counts only the file's own streams, and ends the process when asked for one
// beyond them: attached pictures, which FFmpeg lists as streams, and everything after them.
bool isBeyondOggStreams(const Input& input, const media::Stream& stream) {
  const media::Container& container = input.container();
  if (container.demuxer != "ogg") return false;
  const auto fileStreams =
      std::count_if(container.streams.begin(), container.streams.end(),
                    [](const media::Stream& each) { return !each.isAttachedPicture; });
  return stream.index >= fileStreams;
}

// The ASF demuxer's search has room for as many streams as ASF can number, and overwrites its stack
// when there are more: covers are streams, too.
bool exceedsAsfStreams(const Input& input) {
  constexpr std::size_t kMostStreams = 128;
  const media::Container& container = input.container();
  return container.demuxer == media::kDemuxerAsf && container.streams.size() > kMostStreams;
}

}  // namespace

void Packet::Deleter::operator()(AVPacket* packet) const {
  av_packet_free(&packet);
}

Packet::Packet() : packet_(av_packet_alloc()) {
  if (packet_ == nullptr) throw std::bad_alloc();
}

bool Packet::readFrom(const Input& input) {
  av_packet_unref(packet_.get());
  input.beginOperation();
  return av_read_frame(input.raw(), packet_.get()) >= 0;
}

int Packet::streamIndex() const {
  return packet_->stream_index;
}
std::optional<std::int64_t> Packet::pts() const {
  if (packet_->pts == AV_NOPTS_VALUE) return std::nullopt;
  return packet_->pts;
}
bool Packet::isKeyFrame() const {
  return (packet_->flags & AV_PKT_FLAG_KEY) != 0;
}

bool seek(const Input& input, const media::Stream& stream, std::int64_t timestamp) {
  if (isBeyondOggStreams(input, stream) || exceedsAsfStreams(input)) return false;
  input.beginOperation();
  return av_seek_frame(input.raw(), stream.index, timestamp, 0) >= 0;
}

void Decoder::Deleter::operator()(AVCodecContext* context) const {
  avcodec_free_context(&context);
}

bool Decoder::existsFor(const Input& input, const media::Stream& stream) {
  return avcodec_find_decoder(input.raw(stream)->codecpar->codec_id) != nullptr;
}

std::optional<Decoder> Decoder::open(const Input& input, const media::Stream& stream) {
  const AVCodec* codec = avcodec_find_decoder(input.raw(stream)->codecpar->codec_id);
  if (codec == nullptr) return std::nullopt;
  AVCodecContext* context = avcodec_alloc_context3(codec);
  if (context == nullptr) return std::nullopt;
  Decoder decoder(context);
  if (avcodec_parameters_to_context(context, input.raw(stream)->codecpar) < 0) return std::nullopt;
  if (avcodec_open2(context, codec, nullptr) < 0) return std::nullopt;
  return decoder;
}

void Decoder::flush() {
  avcodec_flush_buffers(context_.get());
}

}  // namespace kolum::ffmpeg
