#include "read/ffmpeg/key_frames.h"

#include <string>
#include <type_traits>

#include "base/log.h"
#include "read/ffmpeg/packets.h"

namespace kolum::ffmpeg {

namespace {

// Time stamps and seconds come from outside, so overflows wrap in two's complement.
template <typename Int>
Int wrappingProduct(Int a, Int b) {
  using Unsigned = std::make_unsigned_t<Int>;
  return static_cast<Int>(static_cast<Unsigned>(a) * static_cast<Unsigned>(b));
}

std::int64_t wrappingSum(std::int64_t a, std::int64_t b) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}

std::int64_t wrappingDifference(std::int64_t a, std::int64_t b) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) - static_cast<std::uint64_t>(b));
}

// SECONDS in units of the time base, with Int's arithmetic.
template <typename Int>
Int ticks(Int seconds, media::Rational timeBase) {
  // No time base is negative; the check prevents a division by 0.
  if (timeBase.num <= 0) return 0;
  return wrappingProduct<Int>(seconds, timeBase.den) / timeBase.num;
}

// How the start of a stream was found.
enum class StartOrigin { kKnown, kSeekFailed, kReadFailed };

struct StreamStart {
  std::int64_t pts;
  StartOrigin origin;
};

// The first time stamp of a stream; 0 if there is none.
StreamStart startOf(const Input& input, const media::Stream& stream, Decoder& decoder) {
  if (stream.startTime) return {*stream.startTime, StartOrigin::kKnown};
  decoder.flush();
  if (!seek(input, stream, 0)) return {0, StartOrigin::kSeekFailed};
  Packet packet;
  while (packet.readFrom(input)) {
    if (packet.streamIndex() == stream.index && packet.pts())
      return {*packet.pts(), StartOrigin::kKnown};
  }
  return {0, StartOrigin::kReadFailed};
}

// A packet to start playing from.
bool isKeyFrameOf(const media::Stream& stream, const Packet& packet) {
  return packet.streamIndex() == stream.index && packet.pts() && packet.isKeyFrame();
}

void reportStart(const StreamStart& start, Trace& trace) {
  if (start.origin == StartOrigin::kKnown) return;
  if (start.origin == StartOrigin::kSeekFailed)
    reportSearch(trace, __LINE__, " seek error, can't find valid PTS.\n");
  else
    reportSearch(trace, __LINE__, " read error or EOF, abort search PTS\n");
  reportSearch(trace, __LINE__, "Can't find valid PTS, assuming it is 0.\n");
}

// The search without a record: it reports failures and tries the video streams in turn.
class ReportingSearch {
 public:
  ReportingSearch(const Input& input, std::int32_t seconds, Trace& trace)
      : input_(input), seconds_(seconds), trace_(trace) {}

  std::optional<double> run() {
    for (const media::Stream& stream : input_.container().streams) {
      if (stream.type != media::StreamType::kVideo) continue;
      if (const auto answer = searchIn(stream); answer.isFinal) return answer.time;
    }
    return std::nullopt;
  }

 private:
  struct Answer {
    bool isFinal;
    std::optional<double> time;
  };
  static constexpr Answer kFailed = {true, std::nullopt};

  Answer searchIn(const media::Stream& stream) {
    // The message has always said "skipping", and log filters know it; nothing is skipped: the
    // search fails, and hosts then seek by themselves.
    if (!Decoder::existsFor(input_, stream)) {
      reportSearch(trace_, __LINE__, " Decoder not found, skipping...\n");
      return kFailed;
    }
    auto decoder = Decoder::open(input_, stream);
    if (!decoder) {
      reportSearch(trace_, __LINE__, " Decoder failed to open, skipping...\n");
      return kFailed;
    }
    const StreamStart start = startOf(input_, stream, *decoder);
    reportStart(start, trace_);
    decoder->flush();
    if (!seek(input_, stream, timestampAfter32(start.pts, seconds_, stream.timeBase))) {
      reportSearch(trace_, __LINE__, " av_seek_frame failed\n");
      return kFailed;
    }
    return readUntilKeyFrame(stream, start.pts);
  }

  // The limit is shared by all video streams, so that a file is not read through once more for each
  // further stream after the first has used the limit up.
  Answer readUntilKeyFrame(const media::Stream& stream, std::int64_t start) {
    Packet packet;
    while (countedPackets_ < kSearchedPackets) {
      if (!packet.readFrom(input_)) {
        reportSearch(trace_, __LINE__, " av_read_frame failed\n\n");
        return kFailed;
      }
      if (isKeyFrameOf(stream, packet)) {
        const media::Rational timeBase = stream.timeBase;
        const double unit = static_cast<double>(timeBase.num) / timeBase.den;
        return {true, static_cast<double>(wrappingDifference(*packet.pts(), start)) * unit};
      }
      if (packet.streamIndex() == stream.index) ++countedPackets_;
    }
    return {false, std::nullopt};
  }

  const Input& input_;
  std::int32_t seconds_;
  Trace& trace_;
  int countedPackets_ = 0;
};

}  // namespace

void reportSearch(Trace& trace, int line, const std::string& message) {
  trace.error("[" + std::string(kMediaSource) + ":" + std::to_string(line) + "]:" + message);
}

std::int64_t timestampAfter(std::int64_t start, std::int64_t seconds, media::Rational timeBase) {
  return wrappingSum(ticks<std::int64_t>(seconds, timeBase), start);
}

std::int64_t timestampAfter32(std::int64_t start, std::int32_t seconds, media::Rational timeBase) {
  return wrappingSum(ticks<std::int32_t>(seconds, timeBase), start);
}

std::optional<double> keyFrameTime(const Input& input, const media::Stream& stream,
                                   std::int64_t seconds) {
  auto decoder = Decoder::open(input, stream);
  if (!decoder) return std::nullopt;
  const std::int64_t start = startOf(input, stream, *decoder).pts;
  decoder->flush();
  if (!seek(input, stream, timestampAfter(start, seconds, stream.timeBase))) return std::nullopt;
  Packet packet;
  for (int read = 0; read < kSearchedPackets && packet.readFrom(input); ++read) {
    if (!isKeyFrameOf(stream, packet)) continue;
    const media::Rational timeBase = stream.timeBase;
    return static_cast<double>(wrappingDifference(*packet.pts(), start)) * timeBase.num /
           timeBase.den;
  }
  return std::nullopt;
}

std::optional<double> searchKeyFrame(const Input& input, std::int32_t seconds, Trace& trace) {
  return ReportingSearch(input, seconds, trace).run();
}

}  // namespace kolum::ffmpeg
