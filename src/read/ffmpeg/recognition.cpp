#include "read/ffmpeg/recognition.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "read/ffmpeg/ffmpeg.h"
#include "read/ffmpeg/file_demuxers.h"

namespace kolum::ffmpeg {

namespace {

// As much as FFmpeg looks at before it gives up.
constexpr std::size_t kLooksAt = std::size_t{1} << 20;

}  // namespace

Recognition recognize(const media::Source& source) {
  release::registerFormats();
  // What FFmpeg's probe functions take: zeros behind the bytes.
  std::vector<std::uint8_t> bytes(kLooksAt + AVPROBE_PADDING_SIZE);
  const std::ptrdiff_t length = source.readAt(0, std::span(bytes).first(kLooksAt));
  AVProbeData data = {};
  // Later releases take HLS for what it is in files of its own name only; for the score of others
  // the name does not count.
  data.filename = "playlist.m3u8";
  data.buf = bytes.data();
  data.buf_size = static_cast<int>(std::max<std::ptrdiff_t>(length, 0));
  int score = 0;
  const AVInputFormat* format = av_probe_input_format3(&data, 1, &score);
  // A lower score is a guess for which FFmpeg itself would read on.
  if (format == nullptr || score <= AVPROBE_SCORE_RETRY) return {};
  const char* words = format->long_name != nullptr ? format->long_name : format->name;
  return {words, opensFurtherFiles(format->name)};
}

}  // namespace kolum::ffmpeg
