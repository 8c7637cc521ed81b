// A media file opened by FFmpeg: gives plain values, and packets for the searches.
#ifndef KOLUM_READ_FFMPEG_INPUT_H
#define KOLUM_READ_FFMPEG_INPUT_H

#include <optional>
#include <string>
#include <utility>

#include "media/source.h"
#include "media/stream.h"
#include "read/ffmpeg/context.h"
#include "read/ffmpeg/depth.h"
#include "read/ffmpeg/details.h"

struct AVStream;

namespace kolum::ffmpeg {

// Closed on destruction.
class Input {
 public:
  // Reads SOURCE, which must outlive the input, and nothing else: no demuxer opens another file.
  // Playlists and scripts are refused: they contain only the names of other files. Empty if FFmpeg
  // cannot open it. Details come with kStreams only: they take the first packets, which must be
  // left for those who read on.
  static std::optional<Input> open(const media::Source& source, Depth depth,
                                   Details details = Details::kLeftOut);
  // Anything but a file, by FFmpeg's own transport ("http://...").
  static std::optional<Input> openUrl(const char* url, Depth depth);

  Input(Input&&) noexcept = default;
  Input& operator=(Input&&) = delete;

  const media::Container& container() const { return container_; }
  media::Container takeContainer() && { return std::move(container_); }

  AVFormatContext* raw() const { return context_.format.get(); }
  AVStream* raw(const media::Stream& stream) const;
  // Call before an operation that continues reading.
  void beginOperation() const;

 private:
  // With details if there are PICTURES, the first of which may be known already.
  Input(Context context, Depth depth, std::optional<FirstPictures>& pictures);

  Context context_;
  media::Container container_;
};

// What a file contains, even if it has no streams; empty if FFmpeg cannot open it.
std::optional<media::Container> readContainer(const std::string& path, Depth depth,
                                              Details details = Details::kLeftOut);

// NUM / DEN in lowest terms, neither above MAX, or the closest possible value.
media::Rational reduce(std::int64_t num, std::int64_t den, std::int64_t max);
// The time base of a stream that a caller passed.
media::Rational timeBase(const AVStream& stream);

}  // namespace kolum::ffmpeg

#endif
