// What is known about a media file, as plain values.
#ifndef KOLUM_MEDIA_STREAM_H
#define KOLUM_MEDIA_STREAM_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "media/rational.h"
#include "media/stream_details.h"

namespace kolum::media {

enum class StreamType { kVideo, kAudio, kSubtitle, kOther };

// Numbers of codecs, profiles and levels are those of FFmpeg's release 57. 0 means unknown unless
// there is an optional.
struct Stream {
  StreamType type = StreamType::kOther;
  int index = 0;               // in the file
  int id = 0;                  // the container's own, such as the PID in a transport stream
  int codec = 0;               // kNoCodec also for codecs added after release 57
  std::string codecName;       // FFmpeg's short name ("av1"), in the linked release
  std::uint32_t codecTag = 0;  // four characters, the first in the lowest byte
  std::string codecTagText;    // unprintable characters appear as "[n]"
  std::vector<std::uint8_t> extraData;
  std::optional<int> profile;
  std::optional<int> level;
  std::int64_t bitRate = 0;  // bits per second

  // Pictures. A picture stored as tiles is one stream of the whole picture's size.
  int width = 0;
  int height = 0;
  std::string pixelFormat;                  // FFmpeg's name ("yuv420p"); empty when unknown
  Rational frameRate;                       // the lowest that expresses all time stamps exactly
  Rational sampleAspect;                    // guessed from container and stream
  bool isAttachedPicture = false;           // the cover of a song or film
  bool isEquirectangular = false;           // its pictures map a whole sphere
  std::optional<std::string> rotation;      // degrees as text, clockwise
  std::optional<std::string> creationTime;  // as stored

  // Audio.
  int sampleRate = 0;
  int channels = 0;
  int bitsPerSample = 0;

  Rational timeBase;
  std::optional<std::int64_t> startTime;  // in the time base

  std::optional<StreamDetails> details = {};  // empty unless asked for
};

// The unit of container durations: units per second.
inline constexpr std::int64_t kTimeBase = 1'000'000;

// Films have some dozens; further ones are left out.
inline constexpr std::size_t kMostContainerTags = 4096;

struct Container {
  std::string demuxer;  // FFmpeg's short name
  std::int64_t bitRate = 0;
  std::int64_t duration = 0;  // in kTimeBase; not positive when unknown
  std::vector<Stream> streams;
  std::vector<std::pair<std::string, std::string>>
      tags;  // kMostContainerTags at most, as in the file
  // Empty unless details are asked for.
  std::vector<Chapter> chapters = {};  // kMostChapters at most
  std::vector<Program> programs = {};  // kMostPrograms at most

  // The first stream of a type; null if there is none.
  const Stream* first(StreamType type) const {
    const auto found = std::find_if(streams.begin(), streams.end(),
                                    [type](const Stream& stream) { return stream.type == type; });
    return found != streams.end() ? &*found : nullptr;
  }
  // Whether there is a video stream that is no cover.
  bool hasFilm() const {
    return std::any_of(streams.begin(), streams.end(), [](const Stream& stream) {
      return stream.type == StreamType::kVideo && !stream.isAttachedPicture;
    });
  }
  std::ptrdiff_t count(StreamType type) const {
    return std::count_if(streams.begin(), streams.end(),
                         [type](const Stream& stream) { return stream.type == type; });
  }
};

}  // namespace kolum::media

#endif
