// An opened media file and its streams, as the families see them: no FFmpeg type, no difference
// between FFmpeg's releases.
#ifndef KOLUM_AV_INPUT_H
#define KOLUM_AV_INPUT_H

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "av/classic_codecs.h"
#include "av/read_limit.h"

struct AVFormatContext;
struct AVStream;

namespace kolum::av {

enum class MediaType { kVideo, kAudio, kSubtitle, kOther };

struct Rational {
  int num = 0;
  int den = 0;
  bool operator==(const Rational&) const = default;
};

// FFmpeg's mark of an unknown time stamp or duration.
inline constexpr std::int64_t kNoTimestamp = INT64_MIN;

// The unit of container durations: a second has this many.
inline constexpr std::int64_t kTimeBase = 1'000'000;

// Short names of the demuxers that rules ask for.
inline constexpr std::string_view kDemuxerMp4 = "mov,mp4,m4a,3gp,3g2,mj2";
inline constexpr std::string_view kDemuxerAsf = "asf";
inline constexpr std::string_view kDemuxerAvi = "avi";
inline constexpr std::string_view kDemuxerFlv = "flv";
inline constexpr std::string_view kDemuxerRawH264 = "h264";
inline constexpr std::string_view kDemuxerMatroska = "matroska,webm";
inline constexpr std::string_view kDemuxerMpegPs = "mpeg";
inline constexpr std::string_view kDemuxerMpegTs = "mpegts";
inline constexpr std::string_view kDemuxerRm = "rm";

// Makes FFmpeg's demuxers known; costs nothing with releases that need no such call.
void registerFormats();

// A view of one stream; valid as long as the Input it came from.
class Stream {
 public:
  Stream(AVFormatContext* context, AVStream* stream);

  MediaType type() const;
  int index() const;
  // The demuxer's stream id, such as the PID in a transport stream.
  int id() const;

  // The frozen codec number of "av/classic_codecs.h"; kNoCodec for later codecs.
  int classicCodec() const;
  // FFmpeg's short name of the codec ("av1"), also of those without a classic number.
  std::string_view codecName() const;
  // The four-character tag, first character in the lowest byte; 0 when there is none.
  std::uint32_t codecTag() const;
  // The tag as text; characters that cannot be printed come as "[n]".
  std::string codecTagText() const;
  std::span<const std::uint8_t> extraData() const;

  // FFmpeg's numbers as release 57 reported them; -99 when unknown.
  int profile() const;
  int level() const;

  // Bits per second; 0 when unknown.
  std::int64_t bitRate() const;

  // In pixels. A picture that is stored as tiles is one stream of the whole picture's size.
  int width() const { return size_.width; }
  int height() const { return size_.height; }
  // FFmpeg's name of a video stream's pixel format ("yuv420p"); empty when unknown.
  std::string_view pixelFormatName() const;

  int sampleRate() const;
  int channels() const;
  int bitsPerCodedSample() const;

  Rational timeBase() const;
  // The lowest frame rate that expresses all time stamps exactly.
  Rational realFrameRate() const;
  std::int64_t startTime() const;

  // FFmpeg's guess from container and stream.
  Rational sampleAspect() const;

  // True for the cover of a song or film, which is a stream of one picture.
  bool isAttachedPicture() const;

  // True when the stream says that its pictures map a whole sphere (equirectangular projection).
  bool isEquirectangular() const;

  // The value of the metadata entry with this key (letter case does not count).
  std::optional<std::string> tag(const char* key) const;

  // Degrees as text: the "rotate" entry, or for MP4 and QuickTime what its display matrix means.
  std::optional<std::string> rotate() const;

  AVStream* raw() const { return stream_; }

 private:
  struct Size {
    int width = 0;
    int height = 0;
  };

  AVFormatContext* context_;
  AVStream* stream_;
  Size size_;
};

// An opened input; closed on destruction.
class Input {
 public:
  // Opens an existing file. Empty when there is none or FFmpeg cannot open it, and for folders,
  // pipes and other things that are no file: opening a pipe would wait for its writer. Playlists
  // and scripts, which would have further files opened, count as files that cannot be opened.
  static std::optional<Input> open(const char* path);
  // Registers the demuxers, opens the file and reads its stream information.
  static std::optional<Input> openWithStreams(const char* path);
  // As open(), and where there is nothing of that name, the URL of that text.
  static std::optional<Input> openUrl(const char* url);

  // Reads packets until the streams are known as far as FFmpeg gets.
  void readStreamInfo();

  std::string_view demuxer() const;
  std::int64_t bitRate() const;
  // In kTimeBase; not positive when unknown.
  std::int64_t duration() const;

  const std::vector<Stream>& streams() const { return streams_; }
  // The first stream of a type in stream order; null when there is none.
  const Stream* firstStream(MediaType type) const;

  // The first container metadata entry whose key begins with PREFIX (letter case does not count).
  std::optional<std::string> tagWithPrefix(const char* prefix) const;
  // Every container metadata entry, key and value, in order.
  std::vector<std::pair<std::string, std::string>> tags() const;

  AVFormatContext* raw() const { return context_.get(); }
  // For what reads on; null for URLs, whose servers set their own pace.
  ReadLimit* readLimit() const { return readLimit_.get(); }

 private:
  struct Closer {
    void operator()(AVFormatContext* context) const;
  };

  // CONTEXT holds options for the opening; it may be null, and LIMIT with it.
  static std::optional<Input> openWith(AVFormatContext* context, const std::string& url,
                                       std::unique_ptr<ReadLimit> limit);
  Input(AVFormatContext* context, std::unique_ptr<ReadLimit> limit);
  void listStreams();

  std::unique_ptr<ReadLimit> readLimit_;
  std::unique_ptr<AVFormatContext, Closer> context_;
  std::vector<Stream> streams_;
};

// NUM / DEN in lowest terms, neither above MAX; as close as that allows.
Rational reduce(std::int64_t num, std::int64_t den, std::int64_t max);

// The time base of a stream that a caller handed in.
Rational timeBase(const AVStream& stream);

}  // namespace kolum::av

#endif
