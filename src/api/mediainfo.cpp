#include <kolum/identifiers.h>
#include <kolum/mediainfo.h>

#include <cstdlib>
#include <memory>

#include "api/guarded.h"
#include "base/trace.h"
#include "media/container.h"
#include "probe/numbers.h"
#include "probe/streams.h"
#include "read/ffmpeg/input.h"
#include "read/ffmpeg/key_frames.h"

using namespace kolum;

namespace {

struct InfoDeleter {
  void operator()(MediaInfo* info) const {
    std::free(info->streams);
    std::free(info);
  }
};
using OwnedInfo = std::unique_ptr<MediaInfo, InfoDeleter>;

// The part that all entries have in common.
MediaStreamInfo entryOf(const media::Stream& stream, unsigned type) {
  MediaStreamInfo entry = {};
  entry.streamType = type;
  entry.codecId = static_cast<unsigned>(stream.codec);
  entry.streamId = stream.id;
  return entry;
}

MediaStreamInfo videoEntry(const media::Stream& stream, std::uint32_t containerFormat) {
  MediaStreamInfo entry = entryOf(stream, MEDIA_STREAM_VIDEO);
  entry.profile = probe::profileOf(stream);
  entry.level = probe::levelNumber(stream);
  entry.bitRate = static_cast<unsigned>(stream.bitRate);
  entry.isDivx = probe::isDivx(stream, containerFormat) ? 1 : 0;
  entry.width = stream.width;
  entry.height = stream.height;
  entry.rotation = probe::rightAngleOf(stream);
  // Divided by the time base's denominator, not the frame rate's: hosts calculate back from it.
  entry.frameRate = stream.timeBase.den != 0 ? stream.frameRate.num / stream.timeBase.den : 0;
  entry.frameRateNum = stream.frameRate.num;
  entry.frameRateDen = stream.frameRate.den;
  return entry;
}

MediaStreamInfo audioEntry(const media::Stream& stream) {
  MediaStreamInfo entry = entryOf(stream, MEDIA_STREAM_AUDIO);
  // The profile goes into bitRate, and profile stays 0: hosts read it there.
  entry.bitRate = static_cast<unsigned>(probe::profileOf(stream));
  entry.level = probe::levelNumber(stream);
  entry.sampleRate = static_cast<unsigned>(stream.sampleRate);
  entry.bitsPerSample = static_cast<unsigned>(stream.bitsPerSample);
  entry.channels = static_cast<unsigned>(stream.channels);
  return entry;
}

// An empty record with room for STREAMS entries; null if memory runs out.
OwnedInfo newInfo(std::size_t streams) {
  OwnedInfo info(static_cast<MediaInfo*>(std::calloc(1, sizeof(MediaInfo))));
  if (info == nullptr) return nullptr;
  info->streams = static_cast<MediaStreamInfo*>(std::calloc(streams, sizeof(MediaStreamInfo)));
  if (info->streams == nullptr) return nullptr;
  return info;
}

void addStream(MediaInfo& info, const media::Stream& stream) {
  MediaStreamInfo& next = info.streams[info.streamCount];
  switch (stream.type) {
    case media::StreamType::kVideo:
      next = videoEntry(stream, info.containerFormat);
      break;
    case media::StreamType::kAudio:
      next = audioEntry(stream);
      break;
    case media::StreamType::kSubtitle:
      next = entryOf(stream, MEDIA_STREAM_SUBTITLE);
      break;
    case media::StreamType::kOther:
      return;
  }
  ++info.streamCount;
}

OwnedInfo infoOf(const probe::StreamsResult& result) {
  const media::Container& container = result.container;
  OwnedInfo info = newInfo(container.streams.size());
  if (info == nullptr) return nullptr;
  info->bitRate = static_cast<unsigned>(container.bitRate);
  info->duration = static_cast<unsigned>(container.duration / media::kTimeBase);
  info->containerFormat = media::containerType(container.demuxer).videoFormat;
  info->sourceKind = result.sourceKind;
  for (const media::Stream& stream : container.streams) addStream(*info, stream);
  return info;
}

}  // namespace

unsigned int GetMediaInfo(const char* path, MediaInfo** info, int64_t seekSeconds,
                          double* keyFrameTime) {
  return api::guarded(1U, [&] {
    if (info == nullptr) return 1U;
    *info = nullptr;
    if (path == nullptr) return 1U;
    const bool searches = seekSeconds >= 1 && keyFrameTime != nullptr;
    Trace trace;
    const auto result =
        probe::probeStreams(path, searches ? std::optional(seekSeconds) : std::nullopt, trace);
    write(trace);
    if (!result) return 1U;
    *info = infoOf(*result).release();
    if (*info == nullptr) return 1U;
    if (keyFrameTime != nullptr && result->keyFrameTime) *keyFrameTime = *result->keyFrameTime;
    return 0U;
  });
}

void Free_MediaInfo(MediaInfo* info) {
  if (info != nullptr) InfoDeleter()(info);
}

unsigned int getVideoKeyFrameTime(const char* url, int seconds, double* keyFrameTime) {
  return api::guarded(1U, [&] {
    if (url == nullptr || keyFrameTime == nullptr || seconds < 0) {
      Trace trace;
      probe::reportParameterError(trace);
      write(trace);
      return 1U;
    }
    const probe::KeyFrameSearch search = probe::searchKeyFrame(url, seconds);
    write(search.trace);
    if (!search.time) return 1U;
    *keyFrameTime = *search.time;
    return 0U;
  });
}

int64_t ElapseTimeToPts(struct AVStream* stream, int64_t startPts, int64_t seconds) {
  if (stream == nullptr) return startPts;
  return ffmpeg::timestampAfter(startPts, seconds, ffmpeg::timeBase(*stream));
}
