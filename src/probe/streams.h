// The streams of a file as players need them.
#ifndef KOLUM_PROBE_STREAMS_H
#define KOLUM_PROBE_STREAMS_H

#include <cstdint>
#include <optional>
#include <string>

#include "base/trace.h"
#include "media/stream.h"

namespace kolum::probe {

struct StreamsResult {
  media::Container container;
  // FORMAT_* of the disc folder that led to the file; FORMAT_UNKNOWN for files.
  std::uint32_t sourceKind = 0;
  // The time of the key frame to start from; what was asked for where none is found, empty without
  // a video stream.
  std::optional<double> keyFrameTime;
};

// Empty when there is nothing to report. SEEKSECONDS, if given, asks for the key frame.
std::optional<StreamsResult> probeStreams(const std::string& path,
                                          std::optional<std::int64_t> seekSeconds, Trace& trace);

// Whether a video stream is MPEG-4 of a kind that some players refuse. Only capitals count, unlike
// for the play exceptions of the video probes: hosts hold both answers.
bool isDivx(const media::Stream& stream, std::uint32_t containerFormat);

// One of the three right angles, else 0.
int rightAngleOf(const media::Stream& stream);

// By FFmpeg's codec number, as for songs; the video probes convert it first. Databases hold both.
int profileOf(const media::Stream& stream);

// Whether the stream's samples are encrypted, by the codec tags of MP4.
bool isEncrypted(const media::Stream& stream);

struct RotationResult {
  std::optional<long> degrees;  // of the first video stream; empty when it is not rotated
};

// Empty when the file has no video stream. Reads no more than the container's header: thumbnail
// builders ask often.
std::optional<RotationResult> rotationOfFile(const std::string& path);

}  // namespace kolum::probe

#endif
