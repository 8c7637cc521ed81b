#include "read/ffmpeg/first_pictures.h"

#include <algorithm>
#include <set>
#include <span>

#include "base/bytes.h"
#include "read/ffmpeg/ffmpeg.h"
#include "read/ffmpeg/formats.h"
#include "read/ffmpeg/owned_packet.h"

namespace kolum::ffmpeg {

namespace {

using Bytes = std::span<const std::uint8_t>;

// The first picture of each stream is among these, or not worth waiting for.
constexpr int kMostPackets = 500;

Bytes extraDataOf(const AVStream& stream) {
  const AVCodecParameters& parameters = *stream.codecpar;
  if (parameters.extradata == nullptr || parameters.extradata_size <= 0) return {};
  return {parameters.extradata, static_cast<std::size_t>(parameters.extradata_size)};
}

bool mayCarrySomething(const AVStream& stream) {
  if (stream.codecpar->codec_type != AVMEDIA_TYPE_VIDEO || isCover(stream)) return false;
  switch (stream.codecpar->codec_id) {
    case AV_CODEC_ID_H264:
    case AV_CODEC_ID_HEVC:
    case AV_CODEC_ID_AV1:
    case AV_CODEC_ID_MPEG2VIDEO:
      return true;
    case AV_CODEC_ID_VP9:
      return stream.codecpar->color_trc == AVCOL_TRC_SMPTE2084;
    default:
      return false;
  }
}

// Matroska keeps messages beside the packets, with their type in front.
void readAddition(Bytes addition, headers::PictureMetadata& found) {
  constexpr std::uint64_t kRegisteredMessage = 4;
  ByteReader bytes(addition);
  if (bytes.bigEndian(8) == kRegisteredMessage)
    headers::readRegisteredMessage(bytes.take(bytes.left()), found);
}

void readSideData(const AVPacket& packet, headers::PictureMetadata& found) {
  for (int i = 0; i < packet.side_data_elems; ++i) {
    const AVPacketSideData& data = packet.side_data[i];
    if (release::isHdr10Plus(data)) found.hasHdr10Plus = true;
    if (data.type == AV_PKT_DATA_A53_CC && data.size > 0) found.hasClosedCaptions = true;
    if (data.type == AV_PKT_DATA_MATROSKA_BLOCKADDITIONAL)
      readAddition({data.data, static_cast<std::size_t>(data.size)}, found);
  }
}

void readCodedPicture(const AVStream& stream, Bytes packet, headers::PictureMetadata& found) {
  using headers::NalSyntax;
  const Bytes configuration = extraDataOf(stream);
  switch (stream.codecpar->codec_id) {
    case AV_CODEC_ID_H264:
      return headers::readNalUnits(packet, NalSyntax::kH264,
                                   headers::lengthSizeOf(configuration, NalSyntax::kH264), found);
    case AV_CODEC_ID_HEVC:
      headers::readHevcConfiguration(configuration, found);
      return headers::readNalUnits(packet, NalSyntax::kHevc,
                                   headers::lengthSizeOf(configuration, NalSyntax::kHevc), found);
    case AV_CODEC_ID_AV1:
      headers::readAv1Configuration(configuration, found);
      return headers::readAv1Units(packet, found);
    case AV_CODEC_ID_MPEG2VIDEO:
      return headers::readMpeg2Picture(packet, found);
    default:
      return;
  }
}

}  // namespace

void FirstPictures::look(const AVStream& stream, const AVPacket& packet) {
  if (!mayCarrySomething(stream) || found_.count(stream.index) > 0) return;
  headers::PictureMetadata& found = found_[stream.index];
  readSideData(packet, found);
  if (packet.data != nullptr && packet.size > 0)
    readCodedPicture(stream, {packet.data, static_cast<std::size_t>(packet.size)}, found);
}

void FirstPictures::readOn(AVFormatContext& context) {
  std::set<int> wanted;
  for (unsigned i = 0; i < context.nb_streams; ++i)
    if (mayCarrySomething(*context.streams[i])) wanted.insert(context.streams[i]->index);
  for (const auto& [index, found] : found_) wanted.erase(index);
  const OwnedPacket packet(av_packet_alloc());
  for (int i = 0; packet != nullptr && !wanted.empty() && i < kMostPackets; ++i) {
    if (av_read_frame(&context, packet.get()) < 0) return;
    look(*context.streams[packet->stream_index], *packet);
    wanted.erase(packet->stream_index);
    av_packet_unref(packet.get());
  }
}

const headers::PictureMetadata* FirstPictures::of(const AVStream& stream) const {
  const auto found = found_.find(stream.index);
  return found != found_.end() ? &found->second : nullptr;
}

}  // namespace kolum::ffmpeg
