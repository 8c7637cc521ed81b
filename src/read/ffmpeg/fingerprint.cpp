#include "read/ffmpeg/fingerprint.h"

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <span>
#include <vector>

extern "C" {
#include <libavutil/mem.h>
#include <libavutil/sha.h>
}

namespace kolum::ffmpeg {

namespace {

class Sha256 {
 public:
  Sha256() : state_(av_sha_alloc()) {
    if (state_ == nullptr) throw std::bad_alloc();
    av_sha_init(state_.get(), 256);
  }
  void add(std::span<const std::uint8_t> bytes) {
    av_sha_update(state_.get(), bytes.data(), bytes.size());
  }
  std::string digits() && {
    constexpr char kDigits[] = "0123456789abcdef";
    std::array<std::uint8_t, 32> sum;
    av_sha_final(state_.get(), sum.data());
    std::string text;
    for (const std::uint8_t byte : sum) {
      text += kDigits[byte >> 4];
      text += kDigits[byte & 15];
    }
    return text;
  }

 private:
  struct Free {
    void operator()(AVSHA* state) const { av_free(state); }
  };
  std::unique_ptr<AVSHA, Free> state_;
};

// Whether all COUNT bytes at POSITION could be read.
bool addPart(Sha256& sum, const media::Source& source, std::int64_t position, std::int64_t count) {
  std::vector<std::uint8_t> part(static_cast<std::size_t>(count));
  if (source.readAt(position, part) != count) return false;
  sum.add(part);
  return true;
}

}  // namespace

std::string fingerprint(const media::Source& source) {
  const std::int64_t size = source.size();
  std::array<std::uint8_t, 8> sizeBytes;
  for (std::size_t i = 0; i < sizeBytes.size(); ++i)
    sizeBytes[i] = static_cast<std::uint8_t>(static_cast<std::uint64_t>(size) >> 8 * i);
  Sha256 sum;
  sum.add(sizeBytes);
  const std::int64_t first = std::min(size, kFingerprintEnd);
  const std::int64_t last = std::min(size - first, kFingerprintEnd);
  if (!addPart(sum, source, 0, first) || !addPart(sum, source, size - last, last)) return {};
  return std::move(sum).digits();
}

}  // namespace kolum::ffmpeg
