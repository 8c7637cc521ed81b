// What the readers of a file's bytes are asked, and what they answer: plain values only, so that
// another process may read the file.
#ifndef KOLUM_READ_FINDINGS_FINDINGS_H
#define KOLUM_READ_FINDINGS_FINDINGS_H

#include <cstdint>
#include <optional>
#include <string>

#include "base/trace.h"
#include "media/disc.h"
#include "media/photo_tags.h"
#include "media/song_tags.h"
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
  // The details of the container's streams, its chapters and programs. Only with the container,
  // read to kStreams.
  bool details = false;
  // If the container is wanted, too: only of MP4.
  bool mp4SubFormat = false;
  // If the container is wanted, too: only of transport streams.
  bool transportPackets = false;
  bool moovPosition = false;
  bool dsfTags = false;
  bool recognition = false;
  // What the bytes say that the file is, and whether its end is missing.
  bool content = false;
  bool fingerprint = false;
  bool songTags = false;
  // What an index file of a disc says; its name says which one it is.
  bool discIndex = false;
  // What the index files in an image of a disc say. Only workers can read them, too.
  bool discImage = false;
  // Only workers can read them: look() below leaves them out.
  bool photoTags = false;
  // The key frame from which to play the first video stream at that many seconds. Only with the
  // container, read to kStreamTimes.
  std::optional<std::int64_t> keyFrameAt = {};
  // The same in all video streams in turn, with a report of failures. Only with the container.
  std::optional<std::int32_t> reportedKeyFrameAt = {};

  bool operator==(const Query&) const = default;
};

// Whatever the file's name.
struct Content {
  std::string type;  // a MIME type; empty if unknown
  bool isTruncated = false;
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
  kOutOfMemory,    // more than a reader may have
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
  Content content;
  std::string fingerprint;  // hexadecimal digits
  std::optional<media::SongTags> songTags;
  std::optional<media::PhotoTags> photoTags;
  std::optional<media::DiscIndex> disc;
  std::optional<double> keyFrameTime;  // seconds from the start of the stream
  Trace keyFrameTrace;
  std::uint64_t bytesRead = 0;  // of the file
  // If set, nothing else is.
  std::optional<Failure> failure;
};

// What either wants.
Query both(const Query& one, const Query& other);

// Reads in this process. Throws std::bad_alloc.
Findings look(const media::Source& source, const Query& query);

}  // namespace kolum::read

#endif
