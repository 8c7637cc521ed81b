#include "read/headers/mpeg_audio.h"

#include <cstddef>
#include <optional>

#include "base/bytes.h"

namespace kolum::headers {

namespace {

constexpr int kMpeg1 = 3;
constexpr int kReservedVersion = 1;
constexpr unsigned kLayer3 = 1;

// kbit/s for MPEG-1 and for the lower rates of MPEG-2 and 2.5; 0 for a free bit rate.
constexpr int kBitRates[2][15] = {
    {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},
    {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160}};
constexpr int kSampleRates[] = {44100, 48000, 32000};

struct Frame {
  unsigned version;
  int sampleRate;
  std::size_t size;  // in bytes
};

std::optional<Frame> readFrame(std::span<const std::uint8_t> bytes) {
  BitReader bits(bytes);
  const bool isFrame = bits.bits(11) == 0x7FF;
  const unsigned version = bits.bits(2);
  const unsigned layer = bits.bits(2);
  bits.skip(1);
  const unsigned bitRate = bits.bits(4);
  const unsigned sampleRate = bits.bits(2);
  const bool isPadded = bits.bit();
  if (bits.failed() || !isFrame || version == kReservedVersion || layer != kLayer3 ||
      bitRate == 0 || bitRate >= std::size(kBitRates[0]) || sampleRate >= std::size(kSampleRates))
    return std::nullopt;
  const bool isMpeg1 = version == kMpeg1;
  const int rate = kSampleRates[sampleRate] / (isMpeg1 ? 1 : version == 2 ? 2 : 4);
  const int size = (isMpeg1 ? 144000 : 72000) * kBitRates[isMpeg1 ? 0 : 1][bitRate] / rate;
  return Frame{version, rate, static_cast<std::size_t>(size) + (isPadded ? 1 : 0)};
}

}  // namespace

bool beginsWithMp3Frames(std::span<const std::uint8_t> sound) {
  constexpr int kEnough = 8;
  std::optional<Frame> first;
  for (int i = 0; i < kEnough; ++i) {
    const auto frame = readFrame(sound);
    if (!frame || frame->size > sound.size()) return false;
    if (!first) first = frame;
    if (frame->version != first->version || frame->sampleRate != first->sampleRate) return false;
    sound = sound.subspan(frame->size);
  }
  return true;
}

}  // namespace kolum::headers
