#include <cstdint>
#include <string_view>

#include "media/container.h"
#include "read/ffmpeg/fingerprint.h"
#include "read/ffmpeg/input.h"
#include "read/ffmpeg/key_frames.h"
#include "read/findings/findings.h"
#include "read/headers/content_type.h"
#include "read/headers/disc_index.h"
#include "read/headers/flac.h"
#include "read/headers/mp4_boxes.h"
#include "read/headers/picture.h"
#include "read/headers/shortcuts.h"
#include "read/headers/truncation.h"
#include "read/headers/ts_packets.h"
#include "read/tags/song_tags.h"

namespace kolum::read {

namespace {

// Of any sound.
constexpr double kMostBitRate = 1e9;

std::optional<Picture> pictureOf(const media::Source& source) {
  if (!headers::mayTakeShortcuts()) return std::nullopt;
  const auto picture = headers::readPicture(source);
  if (!picture) return std::nullopt;
  return Picture{.width = picture->width,
                 .height = picture->height,
                 .pixelFormat = std::string(picture->pixelFormat)};
}

// What FFmpeg does not tell of streams.

void addTrackNames(const media::Source& source, media::Container& container) {
  for (headers::TrackName& found : headers::mp4TrackNames(source))
    for (media::Stream& stream : container.streams)
      if (stream.id >= 0 && static_cast<std::uint32_t>(stream.id) == found.track &&
          stream.details && stream.details->title.empty())
        stream.details->title = found.name;
}

void addFlacBitRate(const media::Source& source, media::Container& container) {
  const auto begin = headers::flacSoundPosition(source);
  if (!begin || *begin > source.size() || container.duration <= 0) return;
  constexpr int kBits = 8;
  const double seconds = static_cast<double>(container.duration) / media::kTimeBase;
  const double rate = static_cast<double>(source.size() - *begin) * kBits / seconds;
  for (media::Stream& stream : container.streams)
    if (stream.type == media::StreamType::kAudio && stream.bitRate == 0 && rate < kMostBitRate)
      stream.bitRate = static_cast<std::int64_t>(rate);
}

void addHeaders(const media::Source& source, media::Container& container) {
  if (container.demuxer == media::kDemuxerMp4) addTrackNames(source, container);
  if (container.demuxer == "flac") addFlacBitRate(source, container);
}

void readContainer(const media::Source& source, const Query& query, Findings& found) {
  const auto details = query.details ? ffmpeg::Details::kWanted : ffmpeg::Details::kLeftOut;
  auto input = ffmpeg::Input::open(source, *query.container, details);
  if (!input) return;
  const media::Stream* video = input->container().first(media::StreamType::kVideo);
  if (query.keyFrameAt && video != nullptr)
    found.keyFrameTime = ffmpeg::keyFrameTime(*input, *video, *query.keyFrameAt);
  if (query.reportedKeyFrameAt)
    found.keyFrameTime =
        ffmpeg::searchKeyFrame(*input, *query.reportedKeyFrameAt, found.keyFrameTrace);
  found.container = std::move(*input).takeContainer();
  if (query.details) addHeaders(source, *found.container);
}

// Whether something is wanted that belongs to one kind of container.
bool isFor(std::string_view demuxer, const Query& query, const Findings& found) {
  return !query.container || (found.container && found.container->demuxer == demuxer);
}

}  // namespace

Query both(const Query& one, const Query& other) {
  const auto either = [](const auto& first, const auto& second) { return first ? first : second; };
  return {.container = either(one.container, other.container),
          .picture = one.picture || other.picture,
          .details = one.details || other.details,
          .mp4SubFormat = one.mp4SubFormat || other.mp4SubFormat,
          .transportPackets = one.transportPackets || other.transportPackets,
          .moovPosition = one.moovPosition || other.moovPosition,
          .dsfTags = one.dsfTags || other.dsfTags,
          .recognition = one.recognition || other.recognition,
          .content = one.content || other.content,
          .fingerprint = one.fingerprint || other.fingerprint,
          .songTags = one.songTags || other.songTags,
          .discIndex = one.discIndex || other.discIndex,
          .discImage = one.discImage || other.discImage,
          .photoTags = one.photoTags || other.photoTags,
          .keyFrameAt = either(one.keyFrameAt, other.keyFrameAt),
          .reportedKeyFrameAt = either(one.reportedKeyFrameAt, other.reportedKeyFrameAt)};
}

Findings look(const media::Source& source, const Query& query) {
  Findings found;
  if (query.picture) found.picture = pictureOf(source);
  if (query.container && !found.picture) readContainer(source, query, found);
  if (query.mp4SubFormat && isFor(media::kDemuxerMp4, query, found))
    found.mp4SubFormat = headers::mp4SubFormat(source);
  if (query.transportPackets && isFor(media::kDemuxerMpegTs, query, found))
    found.transportPackets = headers::packetsOf(source, found.transportPacketsTrace);
  if (query.moovPosition) found.moovPosition = headers::moovPosition(source);
  if (query.dsfTags) found.dsfTags = tags::readDsfTags(source);
  if (query.recognition) found.recognition = ffmpeg::recognize(source);
  if (query.content)
    found.content = {.type = std::string(headers::contentType(source)),
                     .isTruncated = headers::isTruncated(source)};
  if (query.fingerprint) found.fingerprint = ffmpeg::fingerprint(source);
  if (query.songTags) found.songTags = tags::readSongTags(source);
  if (query.discIndex) found.disc = headers::readDiscIndex(source);
  found.bytesRead = source.bytesRead();
  return found;
}

}  // namespace kolum::read
