#include "mediainfo/key_frames.h"

#include <kolum/mediainfo.h>

#include <type_traits>

#include "av/packets.h"
#include "mediainfo/message.h"

namespace kolum::mediainfo {

namespace {

// Time stamps and seconds come from outside, so what does not fit wraps, as two's complement does.
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

// SECONDS in units of the time base, in the arithmetic of Int.
template <typename Int>
Int ticks(Int seconds, av::Rational timeBase) {
  // No time base is negative; the bound keeps the division defined.
  if (timeBase.num <= 0) return 0;
  return wrappingProduct<Int>(seconds, timeBase.den) / timeBase.num;
}

// How the start of a stream came about.
enum class StartOrigin { kKnown, kSeekFailed, kReadFailed };

struct StreamStart {
  std::int64_t pts;
  StartOrigin origin;
};

// The first time stamp of a stream; 0 when it has none.
StreamStart startOf(const av::Input& input, const av::Stream& stream, av::Decoder& decoder) {
  if (stream.startTime() != av::kNoTimestamp) return {stream.startTime(), StartOrigin::kKnown};
  decoder.flush();
  if (!av::seek(input, stream, 0)) return {0, StartOrigin::kSeekFailed};
  av::Packet packet;
  while (packet.readFrom(input)) {
    if (packet.streamIndex() == stream.index() && packet.pts() != av::kNoTimestamp)
      return {packet.pts(), StartOrigin::kKnown};
  }
  return {0, StartOrigin::kReadFailed};
}

// A place to start playing from.
bool isKeyFrameOf(const av::Stream& stream, const av::Packet& packet) {
  return packet.streamIndex() == stream.index() && packet.pts() != av::kNoTimestamp &&
         packet.isKeyFrame();
}

void reportStart(const StreamStart& start) {
  if (start.origin == StartOrigin::kKnown) return;
  if (start.origin == StartOrigin::kSeekFailed)
    KOLUM_MEDIAINFO_MESSAGE("[%s:%d]: seek error, can't find valid PTS.\n");
  else
    KOLUM_MEDIAINFO_MESSAGE("[%s:%d]: read error or EOF, abort search PTS\n");
  KOLUM_MEDIAINFO_MESSAGE("[%s:%d]:Can't find valid PTS, assuming it is 0.\n");
}

// The search on its own: it says what goes wrong, and goes through the video streams in turn.
class ReportingSearch {
 public:
  ReportingSearch(const av::Input& input, std::int32_t seconds)
      : input_(input), seconds_(seconds) {}

  std::optional<double> run() {
    for (const av::Stream& stream : input_.streams()) {
      if (stream.type() != av::MediaType::kVideo) continue;
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

  Answer searchIn(const av::Stream& stream) {
    // "skipping" is what the messages have always said. Nothing is skipped: the search fails, and
    // hosts then seek by themselves.
    if (!av::Decoder::existsFor(stream)) {
      KOLUM_MEDIAINFO_MESSAGE("[%s:%d]: Decoder not found, skipping...\n");
      return kFailed;
    }
    auto decoder = av::Decoder::open(stream);
    if (!decoder) {
      KOLUM_MEDIAINFO_MESSAGE("[%s:%d]: Decoder failed to open, skipping...\n");
      return kFailed;
    }
    const StreamStart start = startOf(input_, stream, *decoder);
    reportStart(start);
    decoder->flush();
    if (!av::seek(input_, stream, timestampAfter32(start.pts, seconds_, stream.timeBase()))) {
      KOLUM_MEDIAINFO_MESSAGE("[%s:%d]: av_seek_frame failed\n");
      return kFailed;
    }
    return readUntilKeyFrame(stream, start.pts);
  }

  // The count goes on from stream to stream, on purpose: a file in which the first video stream has
  // used it up is not read through once more for each of the others.
  Answer readUntilKeyFrame(const av::Stream& stream, std::int64_t start) {
    av::Packet packet;
    while (countedPackets_ < kSearchedPackets) {
      if (!packet.readFrom(input_)) {
        KOLUM_MEDIAINFO_MESSAGE("[%s:%d]: av_read_frame failed\n\n");
        return kFailed;
      }
      if (isKeyFrameOf(stream, packet)) {
        const av::Rational timeBase = stream.timeBase();
        const double unit = static_cast<double>(timeBase.num) / timeBase.den;
        return {true, static_cast<double>(wrappingDifference(packet.pts(), start)) * unit};
      }
      if (packet.streamIndex() == stream.index()) ++countedPackets_;
    }
    return {false, std::nullopt};
  }

  const av::Input& input_;
  std::int32_t seconds_;
  int countedPackets_ = 0;
};

}  // namespace

std::int64_t timestampAfter(std::int64_t start, std::int64_t seconds, av::Rational timeBase) {
  return wrappingSum(ticks<std::int64_t>(seconds, timeBase), start);
}

std::int64_t timestampAfter32(std::int64_t start, std::int32_t seconds, av::Rational timeBase) {
  return wrappingSum(ticks<std::int32_t>(seconds, timeBase), start);
}

std::optional<double> keyFrameTime(const av::Input& input, const av::Stream& stream,
                                   std::int64_t seconds) {
  auto decoder = av::Decoder::open(stream);
  if (!decoder) return std::nullopt;
  const std::int64_t start = startOf(input, stream, *decoder).pts;
  decoder->flush();
  if (!av::seek(input, stream, timestampAfter(start, seconds, stream.timeBase())))
    return std::nullopt;
  av::Packet packet;
  for (int read = 0; read < kSearchedPackets && packet.readFrom(input); ++read) {
    if (!isKeyFrameOf(stream, packet)) continue;
    const av::Rational timeBase = stream.timeBase();
    return static_cast<double>(wrappingDifference(packet.pts(), start)) * timeBase.num /
           timeBase.den;
  }
  return std::nullopt;
}

}  // namespace kolum::mediainfo

unsigned int getVideoKeyFrameTime(const char* url, int seconds, double* keyFrameTime) try {
  if (url == nullptr || keyFrameTime == nullptr || seconds < 0) {
    KOLUM_MEDIAINFO_MESSAGE("[%s:%d]: input parameter error.\n");
    return 1;
  }
  const auto input = kolum::av::Input::openUrl(url);
  if (!input) {
    KOLUM_MEDIAINFO_MESSAGE_OF("[%s:%d]: avformat_open_input %s fail.\n", url);
    return 1;
  }
  const auto time = kolum::mediainfo::ReportingSearch(*input, seconds).run();
  if (!time) return 1;
  *keyFrameTime = *time;
  return 0;
} catch (...) {
  return 1;
}

int64_t ElapseTimeToPts(struct AVStream* stream, int64_t startPts, int64_t seconds) {
  if (stream == nullptr) return startPts;
  return kolum::mediainfo::timestampAfter(startPts, seconds, kolum::av::timeBase(*stream));
}
