#include "av/read_limit.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

#include "av/ffmpeg.h"

namespace kolum::av {

namespace {

bool isAllZero(const std::uint8_t* begin, const std::uint8_t* end) {
  if (begin == end || *begin != 0) return false;
  return std::memcmp(begin, begin + 1, static_cast<std::size_t>(end - begin - 1)) == 0;
}

// How far behind POSITION the file's next data begins: 0 where there is data, or when the file
// system does not say; empty when nothing but a hole follows.
std::optional<std::int64_t> distanceToData(const std::string& path, std::int64_t position) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (file < 0) return 0;
  const off_t data = lseek(file, position, SEEK_DATA);
  const bool onlyHole = data < 0 && errno == ENXIO;
  close(file);
  if (onlyHole) return std::nullopt;
  return std::max<std::int64_t>(data - position, 0);
}

}  // namespace

ReadLimit::ReadLimit(AVFormatContext* context, std::string path)
    : context_(context), path_(std::move(path)) {
  context->interrupt_callback = {isReached, this};
}

// FFmpeg asks before every read; what the last one brought is in the buffer then.
int ReadLimit::isReached(void* opaque) {
  ReadLimit& limit = *static_cast<ReadLimit*>(opaque);
  const AVIOContext* io = limit.context_->pb;
  if (!limit.isOn_ || io == nullptr) return 0;
  limit.count(io->pos, io->buf_end - io->buffer, isAllZero(io->buffer, io->buf_end));
  return limit.left_ <= 0 ? 1 : 0;
}

// A jump empties the buffer: it leads to another part of the file, where the budget counts anew.
void ReadLimit::count(std::int64_t position, std::int64_t buffered, bool isZero) {
  const std::int64_t step = position - position_;
  position_ = position;
  if (step < 0 || step > buffered) {
    left_ = kZerosLimit;
  } else if (step > 0 && isZero) {
    left_ -= step;
    if (left_ > 0) return;
    const std::int64_t hole = distanceToData(path_, position).value_or(kLongestHole);
    if (hole > 0 && hole < kLongestHole) left_ = hole + kZerosLimit;
  }
}

ReadLimit::Scope::Scope(ReadLimit* limit) : limit_(limit) {
  if (limit_ == nullptr) return;
  limit_->isOn_ = true;
  limit_->left_ = kZerosLimit;
  limit_->position_ = limit_->context_->pb != nullptr ? limit_->context_->pb->pos : 0;
}

ReadLimit::Scope::~Scope() {
  if (limit_ != nullptr) limit_->isOn_ = false;
}

}  // namespace kolum::av
