// Finding the key frame to start playing from.
#ifndef KOLUM_READ_FFMPEG_KEY_FRAMES_H
#define KOLUM_READ_FFMPEG_KEY_FRAMES_H

#include <cstdint>
#include <optional>
#include <string>

#include "base/trace.h"
#include "read/ffmpeg/input.h"

namespace kolum::ffmpeg {

// The number of packets after which a search gives up.
inline constexpr int kSearchedPackets = 3600;

// The time stamp SECONDS after START in units of the time base. 64-bit arithmetic that wraps.
std::int64_t timestampAfter(std::int64_t start, std::int64_t seconds, media::Rational timeBase);

// The same, but SECONDS in units of the time base wraps to 32 bits.
std::int64_t timestampAfter32(std::int64_t start, std::int32_t seconds, media::Rational timeBase);

// The time in seconds, from the stream's start, of the key frame from which to play a video stream
// at SECONDS; empty if none is found or the stream cannot be decoded. Packets of all streams count
// towards kSearchedPackets.
std::optional<double> keyFrameTime(const Input& input, const media::Stream& stream,
                                   std::int64_t seconds);

// The search without a record, in all video streams in turn. It reports failures.
std::optional<double> searchKeyFrame(const Input& input, std::int32_t seconds, Trace& trace);

// A line as that search writes it.
void reportSearch(Trace& trace, int line, const std::string& message);

}  // namespace kolum::ffmpeg

#endif
