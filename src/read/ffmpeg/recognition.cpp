#include "read/ffmpeg/recognition.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "read/ffmpeg/ffmpeg.h"
#include "read/ffmpeg/formats.h"

namespace kolum::ffmpeg {

namespace {

// The number of bytes that FFmpeg examines before it gives up.
constexpr std::size_t kLooksAt = std::size_t{1} << 20;

}  // namespace

Recognition recognize(const media::Source& source) {
  release::registerFormats();
  // FFmpeg's probe functions require zeros after the bytes.
  std::vector<std::uint8_t> bytes(kLooksAt + AVPROBE_PADDING_SIZE);
  const std::ptrdiff_t length = source.readAt(0, std::span(bytes).first(kLooksAt));
  AVProbeData data = {};
  // Later releases recognise HLS only in files with such a name; the name does not change the score
  // of other formats.
  data.filename = "playlist.m3u8";
  data.buf = bytes.data();
  data.buf_size = static_cast<int>(std::max<std::ptrdiff_t>(length, 0));
  int score = 0;
  const AVInputFormat* format = av_probe_input_format3(&data, 1, &score);
  // A lower score is a guess; FFmpeg itself would read on.
  if (format == nullptr || score <= AVPROBE_SCORE_RETRY) return {};
  const char* words = format->long_name != nullptr ? format->long_name : format->name;
  return {words, opensFurtherFiles(format->name)};
}

}  // namespace kolum::ffmpeg
