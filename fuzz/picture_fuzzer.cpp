// Reads the bytes as a picture: from their header, and by FFmpeg if the header gives an answer.
// Both must agree. FFmpeg is not asked about large pictures, for which it needs much time and
// memory.
#include <fcntl.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <numeric>
#include <span>

#include "base/descriptor.h"
#include "fuzz/memory_file.h"
#include "media/source.h"
#include "read/ffmpeg/ffmpeg.h"
#include "read/ffmpeg/input.h"
#include "read/headers/picture.h"

namespace {

using kolum::headers::Picture;

void requireSound(const Picture& picture) {
  const bool isSound = picture.width > 0 && picture.height > 0 && !picture.pixelFormat.empty() &&
                       picture.sampleAspect.num >= 0 && picture.sampleAspect.den > 0;
  if (!isSound) std::abort();
}

bool isSame(const Picture& picture, const kolum::media::Stream& stream) {
  const int divisor = std::gcd(picture.sampleAspect.num, picture.sampleAspect.den);
  return picture.width == stream.width && picture.height == stream.height &&
         picture.pixelFormat == stream.pixelFormat &&
         picture.sampleAspect.num / divisor == stream.sampleAspect.num &&
         picture.sampleAspect.den / divisor == stream.sampleAspect.den;
}

void compareWithFfmpeg(const Picture& picture, const kolum::media::Source& source) {
  constexpr std::int64_t kMostPixels = 100'000;
  if (std::int64_t{picture.width} * picture.height > kMostPixels) return;
  av_log_set_level(AV_LOG_QUIET);
  const auto input = kolum::ffmpeg::Input::open(source, kolum::ffmpeg::Depth::kStreams);
  const auto* stream = input ? input->container().first(kolum::media::StreamType::kVideo) : nullptr;
  if (stream == nullptr || !isSame(picture, *stream)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span bytes(data, size);
  const auto whole = kolum::headers::readPicture(bytes, static_cast<std::int64_t>(size));
  if (whole) requireSound(*whole);
  // The first bytes suffice, or there is no answer.
  const auto begin =
      kolum::headers::readPicture(bytes.first(size / 2), static_cast<std::int64_t>(size));
  if (begin) requireSound(*begin);

  const kolum::fuzz::MemoryFile file(data, size);
  const auto source = kolum::media::Source::adopt(
      kolum::Descriptor(open(file.path().c_str(), O_RDONLY | O_CLOEXEC)), "photo.jpg");
  if (!source) std::abort();
  if (const auto picture = kolum::headers::readPicture(*source))
    compareWithFfmpeg(*picture, *source);
  return 0;
}
