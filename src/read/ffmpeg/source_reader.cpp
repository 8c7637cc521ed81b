#include "read/ffmpeg/source_reader.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>

#include "read/ffmpeg/ffmpeg.h"

namespace kolum::ffmpeg {

namespace {

// The size that FFmpeg uses for files it opens itself.
constexpr std::size_t kBufferSize = 32768;

bool isAllZero(std::span<const std::uint8_t> bytes) {
  if (bytes.empty() || bytes.front() != 0) return false;
  return std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0;
}

}  // namespace

SourceReader::SourceReader(const media::Source& source) : source_(source) {
  auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferSize));
  context_ = buffer != nullptr
                 ? avio_alloc_context(buffer, kBufferSize, 0, this, readPacket, nullptr, seek)
                 : nullptr;
  if (context_ != nullptr) return;
  av_free(buffer);
  throw std::bad_alloc();
}

SourceReader::~SourceReader() {
  // FFmpeg may have replaced the buffer it was given.
  av_freep(&context_->buffer);
  release::freeIoContext(context_);
}

int SourceReader::readPacket(void* reader, std::uint8_t* buffer, int size) noexcept {
  if (size <= 0) return AVERROR(EINVAL);
  return static_cast<SourceReader*>(reader)->read({buffer, static_cast<std::size_t>(size)});
}

std::int64_t SourceReader::seek(void* opaque, std::int64_t offset, int whence) noexcept {
  auto& reader = *static_cast<SourceReader*>(opaque);
  switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
      return reader.source_.size();
    case SEEK_SET:
      return reader.seekTo(offset);
    case SEEK_CUR:
      return reader.seekTo(reader.position_ + offset);
    case SEEK_END:
      return reader.seekTo(reader.source_.size() + offset);
    default:
      return AVERROR(EINVAL);
  }
}

int SourceReader::read(std::span<std::uint8_t> out) {
  if (zerosLeft_ <= 0 || left_ <= 0) return AVERROR_EOF;
  if (position_ == 0) source_.head();
  const std::ptrdiff_t got = source_.readAt(position_, out);
  if (got < 0) return AVERROR(errno);
  if (got == 0) return AVERROR_EOF;
  position_ += got;
  count(out.first(static_cast<std::size_t>(got)));
  return static_cast<int>(got);
}

void SourceReader::renew() {
  zerosLeft_ = kZerosLimit;
  left_ = limit_;
}

int SourceReader::isInterrupted(void* reader) noexcept {
  return static_cast<const SourceReader*>(reader)->source_.isUsedUp() ? 1 : 0;
}

// A seek leads to another part of the file, so counting of zeros starts anew.
std::int64_t SourceReader::seekTo(std::int64_t position) {
  if (position < 0) return AVERROR(EINVAL);
  if (position != position_) zerosLeft_ = kZerosLimit;
  return position_ = position;
}

void SourceReader::count(std::span<const std::uint8_t> bytes) {
  const auto size = static_cast<std::int64_t>(bytes.size());
  if (!isAllZero(bytes)) {
    left_ -= size;
    return;
  }
  zerosLeft_ -= size;
  if (zerosLeft_ > 0) return;
  const std::int64_t hole = source_.distanceToData(position_).value_or(kLongestHole);
  if (hole > 0 && hole < kLongestHole) zerosLeft_ = hole + kZerosLimit;
}

}  // namespace kolum::ffmpeg
