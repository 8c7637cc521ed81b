// What the readers of a file's bytes are asked, and what they answer: plain values only, so that
// another process may read the file.
#ifndef KOLUM_READ_FINDINGS_FINDINGS_H
#define KOLUM_READ_FINDINGS_FINDINGS_H

#include <cstdint>
#include <optional>
#include <string>

#include "base/trace.h"
#include "media/source.h"
#include "media/stream.h"
#include "media/transport_packets.h"
#include "read/ffmpeg/depth.h"
#include "read/ffmpeg/recognition.h"
#include "read/headers/mp4_boxes.h"
#include "read/tags/dsf_tags.h"

namespace kolum::read {

// What is wanted of a file. Nothing else of it is read.
struct Query {
  // The container with its streams.
  std::optional<ffmpeg::Depth> container = {};
  // The picture, if the file is a still one whose header says it; the container is not read then.
  bool picture = false;
  // With a container, only if that is MP4.
  bool mp4SubFormat = false;
  // With a container, only if that is a transport stream.
  bool transportPackets = false;
  bool moovPosition = false;
  bool dsfTags = false;
  bool recognition = false;
  // Where to start playing the first video stream, in seconds; the container is read for it.
  std::optional<std::int64_t> keyFrameAt = {};
  // The same in all video streams in turn, with a report of failures.
  std::optional<std::int32_t> reportedKeyFrameAt = {};
};

struct Picture {
  int width = 0;
  int height = 0;
  std::string pixelFormat;  // FFmpeg's name
};

// Why nobody could read a file to its end.
enum class FailureCause {
  kCrashed,        // its reader crashed
  kTimeOver,       // wall time or processor time
  kOutOfMemory,    // of the reader's limit
  kInvalidAnswer,  // the reader said something that no reader says
  kNoReader,       // none could be started
};

struct Failure {
  FailureCause cause = FailureCause::kCrashed;
  std::string reason;  // in words
};

// An empty fact was not asked for or not found.
struct Findings {
  std::optional<media::Container> container;
  std::optional<Picture> picture;
  std::optional<std::uint32_t> mp4SubFormat;
  std::optional<media::TransportPackets> transportPackets;
  Trace transportPacketsTrace;
  std::optional<headers::MoovPosition> moovPosition;
  tags::DsfTags dsfTags;
  ffmpeg::Recognition recognition;
  std::optional<double> keyFrameTime;  // seconds from the start of the stream
  Trace keyFrameTrace;
  std::uint64_t bytesRead = 0;  // of the file
  // If set, nothing else is.
  std::optional<Failure> failure;
};

// Reads in this process.
Findings look(const media::Source& source, const Query& query);

}  // namespace kolum::read

#endif
