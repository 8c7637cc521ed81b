// The only place that includes FFmpeg: its headers, and all differences between its releases.
//
// Built and tested with libavformat 59, 61 and 62; written for 57 to 63. Each difference is a small
// function under a name of our own, with the release that brought the change.
#ifndef KOLUM_READ_FFMPEG_FFMPEG_H
#define KOLUM_READ_FFMPEG_FFMPEG_H

extern "C" {
#include <libavcodec/avcodec.h>
#if LIBAVCODEC_VERSION_MAJOR >= 58 && __has_include(<libavcodec/bsf.h>)
#include <libavcodec/bsf.h>  // part of avcodec.h before
#endif
#include <libavformat/avformat.h>
#include <libavutil/avutil.h>
#include <libavutil/channel_layout.h>
#include <libavutil/dict.h>
#include <libavutil/display.h>
#if __has_include(<libavutil/dovi_meta.h>)
#include <libavutil/dovi_meta.h>  // since 4.4
#endif
#include <libavutil/imgutils.h>
#include <libavutil/mastering_display_metadata.h>
#include <libavutil/mathematics.h>
#include <libavutil/pixdesc.h>
#include <libavutil/rational.h>
#include <libavutil/samplefmt.h>
#include <libavutil/spherical.h>
#include <libavutil/stereo3d.h>
}

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace kolum::ffmpeg::release {

// Formats register themselves since 58.9.
inline void registerFormats() {
#if LIBAVFORMAT_VERSION_INT < AV_VERSION_INT(58, 9, 100)
  av_register_all();
#endif
}

// The codecs in turn, null after the last; POSITION starts as null. 58.10 brought a new call.
inline const AVCodec* nextCodec(void*& position) {
#if LIBAVCODEC_VERSION_INT < AV_VERSION_INT(58, 10, 100)
  AVCodec* next = av_codec_next(static_cast<AVCodec*>(position));
  position = next;
  return next;
#else
  return av_codec_iterate(&position);
#endif
}

// Whether a decoder needs a device. Codecs are marked since 58.0; before, they were not chosen
// unless asked for.
inline bool usesHardware([[maybe_unused]] const AVCodec& codec) {
#if LIBAVCODEC_VERSION_INT < AV_VERSION_INT(58, 18, 100)
  return false;
#else
  return (codec.capabilities & (AV_CODEC_CAP_HARDWARE | AV_CODEC_CAP_HYBRID)) != 0;
#endif
}

// Channel layouts became a structure of their own in 59.24.
inline int channels(const AVCodecParameters& parameters) {
#if LIBAVCODEC_VERSION_INT < AV_VERSION_INT(59, 24, 100)
  return parameters.channels;
#else
  return parameters.ch_layout.nb_channels;
#endif
}

// FFmpeg's name of the channels' places; empty when unknown.
inline std::string channelLayoutName(const AVCodecParameters& parameters) {
  char name[64] = {};
#if LIBAVCODEC_VERSION_INT < AV_VERSION_INT(59, 24, 100)
  if (parameters.channel_layout == 0) return "";
  av_get_channel_layout_string(name, sizeof name, parameters.channels, parameters.channel_layout);
#else
  if (parameters.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC) return "";
  if (av_channel_layout_describe(&parameters.ch_layout, name, sizeof name) < 0) return "";
#endif
  return name;
}

// Marked since 58.42.
inline bool isStillImage([[maybe_unused]] const AVStream& stream) {
#ifdef AV_DISPOSITION_STILL_IMAGE
  return (stream.disposition & AV_DISPOSITION_STILL_IMAGE) != 0;
#else
  return false;
#endif
}

// The frame rate in the bitstream's headers has its own field since 60.31; earlier releases have
// none and need none.
inline AVRational statedFrameRate([[maybe_unused]] const AVCodecParameters& parameters) {
#if LIBAVCODEC_VERSION_INT < AV_VERSION_INT(60, 31, 100)
  return {0, 1};
#else
  return parameters.framerate;
#endif
}

// Contexts have their own function for freeing since 57.80.
inline void freeIoContext(AVIOContext*& context) {
#if LIBAVFORMAT_VERSION_INT < AV_VERSION_INT(57, 80, 100)
  av_freep(&context);
#else
  avio_context_free(&context);
#endif
}

struct SideData {
  AVPacketSideDataType type;
  const std::uint8_t* data;
  std::size_t size;
};

// Side data moved from the stream to its codec parameters in 60.15.
#if LIBAVFORMAT_VERSION_INT < AV_VERSION_INT(60, 15, 100)
inline int sideDataCount(const AVStream& stream) {
  return stream.nb_side_data;
}
inline SideData sideData(const AVStream& stream, int index) {
  const AVPacketSideData& entry = stream.side_data[index];
  return {entry.type, entry.data, static_cast<std::size_t>(entry.size)};
}
#else
inline int sideDataCount(const AVStream& stream) {
  return stream.codecpar->nb_coded_side_data;
}
inline SideData sideData(const AVStream& stream, int index) {
  const AVPacketSideData& entry = stream.codecpar->coded_side_data[index];
  return {entry.type, entry.data, entry.size};
}
#endif

// The side data of this type of a stream; no bytes if there is none.
inline std::span<const std::uint8_t> sideDataOf(const AVStream& stream, AVPacketSideDataType type) {
  for (int i = 0; i < sideDataCount(stream); ++i)
    if (const SideData data = sideData(stream, i); data.type == type) return {data.data, data.size};
  return {};
}

// Containers' configurations of Dolby Vision are read since 4.4.
#if __has_include(<libavutil/dovi_meta.h>)
using DolbyVisionRecord = AVDOVIDecoderConfigurationRecord;
inline std::span<const std::uint8_t> dolbyVisionOf(const AVStream& stream) {
  return sideDataOf(stream, AV_PKT_DATA_DOVI_CONF);
}
#else
struct DolbyVisionRecord {
  std::uint8_t dv_version_major, dv_version_minor, dv_profile, dv_level, rpu_present_flag,
      el_present_flag, bl_present_flag, dv_bl_signal_compatibility_id;
};
inline std::span<const std::uint8_t> dolbyVisionOf(const AVStream& /*stream*/) {
  return {};
}
#endif

// Side data with dynamic metadata is known to packets since 5.0.
inline bool isHdr10Plus([[maybe_unused]] const AVPacketSideData& data) {
#if LIBAVCODEC_VERSION_INT < AV_VERSION_INT(59, 18, 100)
  return false;
#else
  return data.type == AV_PKT_DATA_DYNAMIC_HDR10_PLUS;
#endif
}

// At most so many bytes make a packet of 16-bit samples in a WAV file: since 60 up to a tenth of a
// second.
inline std::int64_t longestWavPacket(const AVCodecParameters& parameters) {
  constexpr std::int64_t kFixed = 4096;
  const std::int64_t least = std::max<std::int64_t>(kFixed, parameters.block_align);
#if LIBAVFORMAT_VERSION_INT < AV_VERSION_INT(60, 0, 100)
  return least;
#else
  constexpr std::int64_t kPacketsPerSecond = 10;
  const int bytes = std::max(parameters.block_align, channels(parameters) * 2);
  return std::max(least, std::int64_t{parameters.sample_rate} * bytes / kPacketsPerSecond);
#endif
}

// Parameter sets that a bitstream filter found in a packet; the size's type changed in 59.0.
inline std::span<const std::uint8_t> newExtraData(const AVPacket& packet) {
#if LIBAVCODEC_VERSION_MAJOR < 59
  int size = 0;
#else
  std::size_t size = 0;
#endif
  const std::uint8_t* data = av_packet_get_side_data(&packet, AV_PKT_DATA_NEW_EXTRADATA, &size);
  if (data == nullptr) return {};
  return {data, static_cast<std::size_t>(size)};
}

struct TileGrid {
  int width;
  int height;
  const AVStream* firstTile;
};

// The picture that a stream is a tile of. Tiled pictures are groups of streams since 61.7; earlier
// releases do not read them.
#if LIBAVFORMAT_VERSION_INT < AV_VERSION_INT(61, 7, 100)
inline std::optional<TileGrid> tileGridOf(const AVFormatContext& /*context*/,
                                          const AVStream& /*stream*/) {
  return std::nullopt;
}
#else
inline std::optional<TileGrid> tileGridOf(const AVFormatContext& context, const AVStream& stream) {
  for (unsigned g = 0; g < context.nb_stream_groups; ++g) {
    const AVStreamGroup& group = *context.stream_groups[g];
    if (group.type != AV_STREAM_GROUP_PARAMS_TILE_GRID) continue;
    AVStream** const end = group.streams + group.nb_streams;
    if (std::find(group.streams, end, &stream) == end) continue;
    const AVStreamGroupTileGrid& grid = *group.params.tile_grid;
    return TileGrid{grid.width, grid.height, group.streams[0]};
  }
  return std::nullopt;
}
#endif

}  // namespace kolum::ffmpeg::release

#endif
