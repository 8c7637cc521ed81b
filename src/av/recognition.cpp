#include "av/recognition.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <vector>

#include "av/ffmpeg.h"
#include "av/file_demuxers.h"
#include "av/input.h"

namespace kolum::av {

namespace {

// As much as FFmpeg looks at before it gives up.
constexpr std::size_t kLooksAt = std::size_t{1} << 20;

// What FFmpeg's probe functions take: zeros behind the bytes.
std::vector<std::uint8_t> beginningOf(const char* path, std::size_t& length) {
  std::vector<std::uint8_t> bytes(kLooksAt + AVPROBE_PADDING_SIZE);
  std::ifstream file(path, std::ios::binary);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(kLooksAt));
  length = static_cast<std::size_t>(file.gcount());
  return bytes;
}

}  // namespace

Recognition recognize(const char* path) {
  std::error_code error;
  // Opening a FIFO would wait for its writer.
  if (!std::filesystem::is_regular_file(path, error)) return {};
  registerFormats();
  std::size_t length = 0;
  std::vector<std::uint8_t> bytes = beginningOf(path, length);
  AVProbeData data = {};
  // Later releases take HLS for what it is in files of its own name only; for the score of others
  // the name does not count.
  data.filename = "playlist.m3u8";
  data.buf = bytes.data();
  data.buf_size = static_cast<int>(length);
  int score = 0;
  const AVInputFormat* format = av_probe_input_format3(&data, 1, &score);
  // A lower score is a guess for which FFmpeg itself would read on.
  if (format == nullptr || score <= AVPROBE_SCORE_RETRY) return {};
  const char* words = format->long_name != nullptr ? format->long_name : format->name;
  return {words, opensFurtherFiles(format->name)};
}

}  // namespace kolum::av
