#include "read/ffmpeg/header_decoder.h"

#include <cerrno>
#include <memory>

#include "read/ffmpeg/ffmpeg.h"
#include "read/ffmpeg/formats.h"

namespace kolum::ffmpeg {

namespace {

struct DecoderDeleter {
  void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};

int refuseMemory(AVCodecContext* /*context*/, AVFrame* /*frame*/, int /*flags*/) {
  return AVERROR(ENOMEM);
}

}  // namespace

std::optional<PictureParameters> decodeHeader(const AVStream& stream, const AVPacket& packet) {
  constexpr int kSilent = 100;
  const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
  if (codec == nullptr || !isAllowedCodec(stream)) return std::nullopt;
  const std::unique_ptr<AVCodecContext, DecoderDeleter> decoder(avcodec_alloc_context3(codec));
  if (decoder == nullptr || avcodec_parameters_to_context(decoder.get(), stream.codecpar) < 0)
    return std::nullopt;
  decoder->get_buffer2 = refuseMemory;
  decoder->thread_count = 1;
  decoder->log_level_offset = kSilent;
  if (avcodec_open2(decoder.get(), codec, nullptr) < 0) return std::nullopt;
  // Its result is that of the refusal.
  avcodec_send_packet(decoder.get(), &packet);
  if (decoder->width <= 0 || decoder->height <= 0 || decoder->pix_fmt == AV_PIX_FMT_NONE)
    return std::nullopt;
  const AVRational aspect = decoder->sample_aspect_ratio;
  return PictureParameters{.width = decoder->width,
                           .height = decoder->height,
                           .pixelFormat = decoder->pix_fmt,
                           .profile = decoder->profile,
                           .level = decoder->level,
                           .sampleAspect = {aspect.num, aspect.den}};
}

}  // namespace kolum::ffmpeg
