#include "av/read_limit.h"

#include <algorithm>
#include <cstring>

#include "av/ffmpeg.h"

namespace kolum::av {

namespace {

bool isAllZero(const std::uint8_t* begin, const std::uint8_t* end) {
  if (begin == end || *begin != 0) return false;
  return std::memcmp(begin, begin + 1, static_cast<std::size_t>(end - begin - 1)) == 0;
}

}  // namespace

ReadLimit::ReadLimit(AVFormatContext* context) : context_(context) {
  context->interrupt_callback = {isReached, this};
}

// FFmpeg asks before every read; what the last one brought is in the buffer then.
int ReadLimit::isReached(void* opaque) {
  ReadLimit& limit = *static_cast<ReadLimit*>(opaque);
  const AVIOContext* io = limit.context_->pb;
  if (!limit.isOn_ || io == nullptr) return 0;
  const std::int64_t step = io->pos - limit.position_;
  limit.position_ = io->pos;
  if (step > 0 && isAllZero(io->buffer, io->buf_end))
    limit.left_ -= std::min<std::int64_t>(step, io->buf_end - io->buffer);
  return limit.left_ <= 0 ? 1 : 0;
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
