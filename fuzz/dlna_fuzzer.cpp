#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "video/dlna.h"

namespace {

constexpr const char* kDemuxers[] = {"mpegts", "mpeg", "asf", "mov,mp4,m4a,3gp,3g2,mj2", "avi"};
constexpr int kCodecs[] = {1, 2, 13, 17, 28, 72, 73};

// Plain numbers taken from the input as long as it lasts.
class Numbers {
 public:
  Numbers(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
  int next() {
    int value = 0;
    const std::size_t count = size_ < sizeof value ? size_ : sizeof value;
    std::memcpy(&value, data_, count);
    data_ += count;
    size_ -= count;
    return value;
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kolum::video;
  if (size == 0) return 0;
  Numbers numbers(data, size);
  const auto pick = [&numbers](const auto& list) {
    return list[static_cast<unsigned>(numbers.next()) % std::size(list)];
  };
  DlnaFacts facts;
  facts.codec = pick(kCodecs);
  facts.demuxer = pick(kDemuxers);
  facts.width = numbers.next();
  facts.height = numbers.next();
  facts.streamBitRate = numbers.next();
  facts.containerBitRate = numbers.next();
  facts.profile = numbers.next();
  facts.level = numbers.next();
  facts.audioClass = static_cast<unsigned>(numbers.next()) % 12;
  facts.realFrameRate = {numbers.next(), numbers.next()};
  facts.timeBaseDen = numbers.next();
  facts.path = "/a/b.3gp";
  const TransportPackets packets = {static_cast<unsigned>(numbers.next()), false};
  DlnaExplanation explanation;
  const DlnaName plain = nameDlnaProfile(facts, [&] { return packets; });
  const DlnaName explained = nameDlnaProfile(
      facts, [&] { return packets; }, &explanation);
  // Asking why changes nothing, and every name fits its field.
  if (plain.profile != explained.profile || plain.profile.size() > 127) std::abort();
  return 0;
}
