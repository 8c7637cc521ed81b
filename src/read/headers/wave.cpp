#include "read/headers/wave.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

#include "base/bytes.h"

namespace kolum::headers {

namespace {

using Bytes = std::span<const std::uint8_t>;

// FFmpeg takes these formats for certain only if the first samples are their first frames.
struct FirstBytes {
  std::array<std::uint8_t, 2> mask;
  std::array<std::uint8_t, 2> value;
};
constexpr FirstBytes kFirstBytes[] = {
    {{0xFF, 0xF6}, {0xFF, 0xF0}},  // AAC (ADTS)
    {{0xFF, 0xE0}, {0x56, 0xE0}},  // AAC (LOAS)
    {{0xFF, 0xFF}, {0x0B, 0x77}},  // AC-3
    {{0xFF, 0xFF}, {0x77, 0x0B}},  // AC-3 with its bytes swapped
    {{0xFF, 0xFF}, {0x01, 0x10}},  // AC-3 behind a header
    {{0xFF, 0xFF}, {'I', 'D'}},    // an ID3v2 tag before any of these
};

// Others are found anywhere, by at least these four bytes.
using Mark = std::array<std::uint8_t, 4>;
constexpr Mark kDts = {0x7F, 0xFE, 0x80, 0x01};
constexpr Mark kSwappedDts = {0xFE, 0x7F, 0x01, 0x80};
constexpr Mark kDtsOf14Bits = {0x1F, 0xFF, 0xE8, 0x00};
constexpr Mark kSwappedDtsOf14Bits = {0xFF, 0x1F, 0x00, 0xE8};
constexpr Mark kDtsExtension = {0x64, 0x58, 0x20, 0x25};
constexpr Mark kTrueHd = {0xF8, 0x72, 0x6F, 0xBA};

bool beginsWithFrame(Bytes samples) {
  return std::any_of(std::begin(kFirstBytes), std::end(kFirstBytes), [&](const FirstBytes& row) {
    return (samples[0] & row.mask[0]) == row.value[0] && (samples[1] & row.mask[1]) == row.value[1];
  });
}

// MPEG audio may begin after silence. Anything but what cannot be a frame's header counts.
bool beginsWithMpegAudio(Bytes samples) {
  const auto begin =
      std::find_if(samples.begin(), samples.end(), [](std::uint8_t byte) { return byte != 0; });
  BitReader bits(samples.subspan(static_cast<std::size_t>(begin - samples.begin())));
  const bool isMarked = bits.bits(11) == 0x7FF;
  const bool hasVersion = bits.bits(2) != 1;
  const bool hasLayer = bits.bits(2) != 0;
  bits.skip(1);
  const std::uint32_t bitRate = bits.bits(4);
  const bool hasSampleRate = bits.bits(2) != 3;
  return isMarked && hasVersion && hasLayer && bitRate != 0 && bitRate != 15 && hasSampleRate;
}

// 1 or 0, for arithmetic.
constexpr unsigned matches(const std::uint8_t* bytes, const Mark& mark) {
  return static_cast<unsigned>(bytes[0] == mark[0]) & static_cast<unsigned>(bytes[1] == mark[1]) &
         static_cast<unsigned>(bytes[2] == mark[2]) & static_cast<unsigned>(bytes[3] == mark[3]);
}

// Without a branch for each position: compilers make it compare many bytes at a time.
bool containsMark(Bytes samples) {
  std::uint8_t found = 0;
  const std::uint8_t* const bytes = samples.data();
  const std::size_t end = samples.size() - std::min(samples.size(), kDts.size() - 1);
  for (std::size_t i = 0; i < end; ++i)
    found |= static_cast<std::uint8_t>(
        matches(bytes + i, kDts) | matches(bytes + i, kSwappedDts) |
        matches(bytes + i, kDtsOf14Bits) | matches(bytes + i, kSwappedDtsOf14Bits) |
        matches(bytes + i, kDtsExtension) | matches(bytes + i, kTrueHd));
  return found != 0;
}

// Whether the samples go on to the end of their part of the file: FFmpeg continues with the next
// "data" chunk.
bool isOneChunk(const media::Source& source, std::int64_t position, std::size_t length) {
  constexpr std::int64_t kHeaderSize = 8;
  std::array<std::uint8_t, kHeaderSize> header = {};
  if (position < kHeaderSize ||
      source.readAt(position - kHeaderSize, header) != static_cast<std::ptrdiff_t>(kHeaderSize))
    return false;
  ByteReader reader(header);
  return reader.text(4) == "data" && reader.littleEndian(4) >= length;
}

}  // namespace

bool isPlainPcm(const media::Source& source, std::int64_t position, std::size_t length) {
  constexpr std::size_t kShortest = 1024;
  std::vector<std::uint8_t> buffer(length);
  const std::ptrdiff_t got = source.readAt(position, buffer);
  if (got < static_cast<std::ptrdiff_t>(kShortest)) return false;
  const Bytes samples = Bytes(buffer).first(static_cast<std::size_t>(got));
  return isOneChunk(source, position, samples.size()) && !beginsWithFrame(samples) &&
         !beginsWithMpegAudio(samples) && !containsMark(samples);
}

}  // namespace kolum::headers
