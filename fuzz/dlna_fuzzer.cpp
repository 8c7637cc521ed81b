#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <span>
#include <string>

#include "dlna/naming.h"

namespace {

constexpr const char* kDemuxers[] = {"mpegts", "mpeg", "asf", "mov,mp4,m4a,3gp,3g2,mj2", "avi"};
constexpr int kCodecs[] = {1, 2, 13, 17, 28, 72, 73};

constexpr unsigned kPacketSizes[] = {0, 188, 192};
constexpr const char* kExtensions[] = {"", ".3gp", ".3G2", ".mp4", ".mov", ".ts", ".wmv", ".mpg"};

// Takes plain numbers from the input until it is used up.
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

  std::span<const std::uint8_t> rest() const { return {data_, size_}; }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kolum::dlna;
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
  facts.codecTag = static_cast<std::uint32_t>(numbers.next());
  const auto layout = static_cast<unsigned>(numbers.next());
  const TransportPackets packets = {pick(kPacketSizes), layout % 2 != 0};
  const std::string path = std::string("/a/b") + pick(kExtensions);
  facts.path = path;
  facts.extraData = numbers.rest();
  DlnaExplanation explanation;
  const DlnaName plain = nameDlnaProfile(facts, [&] { return packets; });
  const DlnaName explained = nameDlnaProfile(
      facts, [&] { return packets; }, &explanation);
  // Asking for an explanation does not change the name, and every name fits its field.
  if (plain.profile != explained.profile || plain.profile.size() > 127) std::abort();
  return 0;
}
