// The streams of a file as players need them.
#ifndef KOLUM_PROBE_STREAMS_H
#define KOLUM_PROBE_STREAMS_H

#include <cstdint>
#include <optional>
#include <string>

#include "base/trace.h"
#include "media/stream.h"
#include "read/ffmpeg/depth.h"

namespace kolum::probe {

// What a file contains, even if it has no streams; empty if it cannot be read.
std::optional<media::Container> containerOf(const std::string& path, ffmpeg::Depth depth);

struct StreamsResult {
  media::Container container;
  // FORMAT_* of the disc folder that led to the file; FORMAT_UNKNOWN for files.
  std::uint32_t sourceKind = 0;
  // The time of the key frame to start from; the requested time if none is found, and empty without
  // a video stream.
  std::optional<double> keyFrameTime;
};

// Empty if there is nothing to report. SEEKSECONDS, if given, requests the key frame.
std::optional<StreamsResult> probeStreams(const std::string& path,
                                          std::optional<std::int64_t> seekSeconds, Trace& trace);

// The search without a record, in all video streams in turn. It reports failures.
struct KeyFrameSearch {
  std::optional<double> time;
  Trace trace;
};
KeyFrameSearch searchKeyFrame(const char* url, std::int32_t seconds);
void reportParameterError(Trace& trace);

// Whether a video stream is MPEG-4 of a kind that some players refuse. Only capitals count, unlike
// for the play exceptions of the video probes: databases hold both.
bool isDivx(const media::Stream& stream, std::uint32_t containerFormat);

// One of the three right angles, else 0.
int rightAngleOf(const media::Stream& stream);

// Chosen by FFmpeg's codec number, as for songs; the video probes convert that number first.
// Databases hold both.
int profileOf(const media::Stream& stream);

// Whether the stream's samples are encrypted, by the codec tags of MP4.
bool isEncrypted(const media::Stream& stream);

struct RotationResult {
  std::optional<long> degrees;  // of the first video stream; empty if it is not rotated
};

// Empty if the file has no video stream. Reads only the container's header: hosts ask for every
// file they show.
std::optional<RotationResult> rotationOfFile(const std::string& path);

}  // namespace kolum::probe

#endif
