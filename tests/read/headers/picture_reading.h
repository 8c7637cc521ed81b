// Pictures in words, as read from their headers and as read by FFmpeg.
#ifndef KOLUM_TESTS_READ_HEADERS_PICTURE_READING_H
#define KOLUM_TESTS_READ_HEADERS_PICTURE_READING_H

#include <numeric>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "read/ffmpeg/ffmpeg.h"
#include "read/ffmpeg/input.h"
#include "read/headers/picture.h"

namespace kolum::test {

inline constexpr std::string_view kNone = "none";

// "20 x 10 rgb24", with the aspect of pixels if it is known: "20 x 10 rgb24, 4:3".
inline std::string inWords(int width, int height, std::string_view pixelFormat,
                           media::Rational aspect) {
  std::string words =
      std::to_string(width) + " x " + std::to_string(height) + " " + std::string(pixelFormat);
  if (aspect.num == 0) return words;
  const int divisor = std::gcd(aspect.num, aspect.den);
  return words + ", " + std::to_string(aspect.num / divisor) + ":" +
         std::to_string(aspect.den / divisor);
}

inline std::string inWords(const std::optional<headers::Picture>& picture) {
  if (!picture) return std::string(kNone);
  return inWords(picture->width, picture->height, picture->pixelFormat, picture->sampleAspect);
}

// Of a file that begins with BYTES, or consists of them.
inline std::string headerAnswer(std::string_view bytes, std::optional<std::int64_t> size = {}) {
  return inWords(headers::readPicture(
      std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()),
      size.value_or(static_cast<std::int64_t>(bytes.size()))));
}

inline std::string headerAnswer(const media::Source& source) {
  return inWords(headers::readPicture(source));
}

inline std::string headerAnswerForFile(const std::string& path) {
  const auto source = media::Source::open(path);
  return source ? headerAnswer(*source) : std::string(kNone);
}

inline std::string ffmpegAnswer(const media::Source& source) {
  // It complains about every damaged picture.
  av_log_set_level(AV_LOG_QUIET);
  const auto input = ffmpeg::Input::open(source, ffmpeg::Depth::kStreams);
  const media::Stream* stream =
      input ? input->container().first(media::StreamType::kVideo) : nullptr;
  if (stream == nullptr) return std::string(kNone);
  return inWords(stream->width, stream->height, stream->pixelFormat, stream->sampleAspect);
}

inline std::string ffmpegAnswer(const std::string& path) {
  const auto source = media::Source::open(path);
  return source ? ffmpegAnswer(*source) : std::string(kNone);
}

}  // namespace kolum::test

#endif
