#include "probe/key_frames.h"

#include <string>
#include <string_view>
#include <type_traits>

#include "base/files.h"
#include "base/log.h"
#include "media/source.h"
#include "read/ffmpeg/packets.h"

namespace kolum::probe {

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
StreamStart startOf(const ffmpeg::Input& input, const media::Stream& stream,
                    ffmpeg::Decoder& decoder) {
  if (stream.startTime) return {*stream.startTime, StartOrigin::kKnown};
  decoder.flush();
  if (!ffmpeg::seek(input, stream, 0)) return {0, StartOrigin::kSeekFailed};
  ffmpeg::Packet packet;
  while (packet.readFrom(input)) {
    if (packet.streamIndex() == stream.index && packet.pts())
      return {*packet.pts(), StartOrigin::kKnown};
  }
  return {0, StartOrigin::kReadFailed};
}

// A packet to start playing from.
bool isKeyFrameOf(const media::Stream& stream, const ffmpeg::Packet& packet) {
  return packet.streamIndex() == stream.index && packet.pts() && packet.isKeyFrame();
}

void report(Trace& trace, int line, const std::string& message) {
  trace.error("[" + std::string(kMediaSource) + ":" + std::to_string(line) + "]:" + message);
}

void reportStart(const StreamStart& start, Trace& trace) {
  if (start.origin == StartOrigin::kKnown) return;
  if (start.origin == StartOrigin::kSeekFailed)
    report(trace, __LINE__, " seek error, can't find valid PTS.\n");
  else
    report(trace, __LINE__, " read error or EOF, abort search PTS\n");
  report(trace, __LINE__, "Can't find valid PTS, assuming it is 0.\n");
}

// The search without a record: it reports failures and tries the video streams in turn.
class ReportingSearch {
 public:
  ReportingSearch(const ffmpeg::Input& input, std::int32_t seconds, Trace& trace)
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
    if (!ffmpeg::Decoder::existsFor(input_, stream)) {
      report(trace_, __LINE__, " Decoder not found, skipping...\n");
      return kFailed;
    }
    auto decoder = ffmpeg::Decoder::open(input_, stream);
    if (!decoder) {
      report(trace_, __LINE__, " Decoder failed to open, skipping...\n");
      return kFailed;
    }
    const StreamStart start = startOf(input_, stream, *decoder);
    reportStart(start, trace_);
    decoder->flush();
    if (!ffmpeg::seek(input_, stream, timestampAfter32(start.pts, seconds_, stream.timeBase))) {
      report(trace_, __LINE__, " av_seek_frame failed\n");
      return kFailed;
    }
    return readUntilKeyFrame(stream, start.pts);
  }

  // The limit is shared by all video streams, so that a file is not read through once more for each
  // further stream after the first has used the limit up.
  Answer readUntilKeyFrame(const media::Stream& stream, std::int64_t start) {
    ffmpeg::Packet packet;
    while (countedPackets_ < kSearchedPackets) {
      if (!packet.readFrom(input_)) {
        report(trace_, __LINE__, " av_read_frame failed\n\n");
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

  const ffmpeg::Input& input_;
  std::int32_t seconds_;
  Trace& trace_;
  int countedPackets_ = 0;
};

// Whether FFmpeg sees a scheme at the start of a name ("http:", "subfile,,start,0,end,9,,:").
bool hasScheme(std::string_view url) {
  constexpr std::string_view kSchemeCharacters =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789+-.";
  const std::size_t end = url.find_first_not_of(kSchemeCharacters);
  if (end == std::string_view::npos) return false;
  return url[end] == ':' ||
         (url.starts_with("subfile,") && url.find(':', end) != std::string_view::npos);
}

// The file that a URL names; empty if FFmpeg should use a transport of its own. A name that exists
// as a path is a file, even if it looks like a URL.
std::optional<std::string> pathOf(const char* url) {
  constexpr std::string_view kFileScheme = "file:";
  if (!hasScheme(url) || exists(url)) return url;
  if (std::string_view(url).starts_with(kFileScheme)) return url + kFileScheme.size();
  return std::nullopt;
}

KeyFrameSearch searchIn(const std::optional<ffmpeg::Input>& input, const std::string& url,
                        std::int32_t seconds) {
  KeyFrameSearch search;
  if (input)
    search.time = ReportingSearch(*input, seconds, search.trace).run();
  else
    report(search.trace, __LINE__, " avformat_open_input " + url + " fail.\n");
  return search;
}

}  // namespace

std::int64_t timestampAfter(std::int64_t start, std::int64_t seconds, media::Rational timeBase) {
  return wrappingSum(ticks<std::int64_t>(seconds, timeBase), start);
}

std::int64_t timestampAfter32(std::int64_t start, std::int32_t seconds, media::Rational timeBase) {
  return wrappingSum(ticks<std::int32_t>(seconds, timeBase), start);
}

std::optional<double> keyFrameTime(const ffmpeg::Input& input, const media::Stream& stream,
                                   std::int64_t seconds) {
  auto decoder = ffmpeg::Decoder::open(input, stream);
  if (!decoder) return std::nullopt;
  const std::int64_t start = startOf(input, stream, *decoder).pts;
  decoder->flush();
  if (!ffmpeg::seek(input, stream, timestampAfter(start, seconds, stream.timeBase)))
    return std::nullopt;
  ffmpeg::Packet packet;
  for (int read = 0; read < kSearchedPackets && packet.readFrom(input); ++read) {
    if (!isKeyFrameOf(stream, packet)) continue;
    const media::Rational timeBase = stream.timeBase;
    return static_cast<double>(wrappingDifference(*packet.pts(), start)) * timeBase.num /
           timeBase.den;
  }
  return std::nullopt;
}

KeyFrameSearch searchKeyFrame(const char* url, std::int32_t seconds) {
  const auto path = pathOf(url);
  if (!path) return searchIn(ffmpeg::Input::openUrl(url, ffmpeg::Depth::kHeader), url, seconds);
  const auto source = media::Source::open(*path);
  return searchIn(source ? ffmpeg::Input::open(*source, ffmpeg::Depth::kHeader) : std::nullopt, url,
                  seconds);
}

void reportParameterError(Trace& trace) {
  report(trace, __LINE__, " input parameter error.\n");
}

}  // namespace kolum::probe
