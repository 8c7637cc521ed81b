// A media file that FFmpeg has opened: it fills plain values, and reads packets for the searches.
#ifndef KOLUM_READ_FFMPEG_INPUT_H
#define KOLUM_READ_FFMPEG_INPUT_H

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "media/source.h"
#include "media/stream.h"

struct AVFormatContext;
struct AVStream;

namespace kolum::ffmpeg {

class SourceReader;

// How far an input is read when it is opened.
enum class Depth {
  kHeader,   // what the container's header says
  kStreams,  // and packets, until the streams are known as far as FFmpeg gets
};

// Closed on destruction.
class Input {
 public:
  // Reads SOURCE, which outlives the input, and nothing else: no demuxer opens another file.
  // Playlists and scripts are refused, as all that they say is the names of other files. Empty when
  // FFmpeg cannot open it.
  static std::optional<Input> open(const media::Source& source, Depth depth);
  // Something that is no file, by FFmpeg's own transport ("http://...").
  static std::optional<Input> openUrl(const char* url, Depth depth);

  Input(Input&&) noexcept;
  Input& operator=(Input&&) = delete;
  ~Input();

  const media::Container& container() const { return container_; }
  media::Container takeContainer() && { return std::move(container_); }

  AVFormatContext* raw() const { return context_.get(); }
  AVStream* raw(const media::Stream& stream) const;
  // To be called before an operation that reads on.
  void beginOperation() const;

 private:
  struct Closer {
    void operator()(AVFormatContext* context) const;
  };
  Input(AVFormatContext* context, std::unique_ptr<SourceReader> reader, Depth depth);

  // Null for URLs, whose servers set their own pace.
  std::unique_ptr<SourceReader> reader_;
  std::unique_ptr<AVFormatContext, Closer> context_;
  media::Container container_;
};

// What is in a file, whether it has streams or not; empty when FFmpeg cannot open it.
std::optional<media::Container> readContainer(const std::string& path, Depth depth);

// NUM / DEN in lowest terms, neither above MAX; as close as that allows.
media::Rational reduce(std::int64_t num, std::int64_t den, std::int64_t max);
// The time base of a stream that a caller handed in.
media::Rational timeBase(const AVStream& stream);

}  // namespace kolum::ffmpeg

#endif
