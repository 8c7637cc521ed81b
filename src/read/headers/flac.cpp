#include "read/headers/flac.h"

#include <array>
#include <span>

#include "base/bytes.h"
#include "read/headers/id3v2.h"

namespace kolum::headers {

std::optional<std::int64_t> flacSoundPosition(const media::Source& source) {
  constexpr std::size_t kHeader = 4;  // of the file and of each block
  constexpr std::uint64_t kLastBlock = 0x80;
  constexpr int kMostBlocks = 1024;
  std::array<std::uint8_t, kHeader> header = {};
  const auto readHeader = [&](std::int64_t position) {
    return source.readAt(position, header) == static_cast<std::ptrdiff_t>(kHeader);
  };
  std::int64_t position = id3v2Size(source.head());
  if (!readHeader(position) || textOf(header) != "fLaC") return std::nullopt;
  position += static_cast<std::int64_t>(kHeader);
  for (int i = 0; i < kMostBlocks && readHeader(position); ++i) {
    ByteReader bytes(header);
    const bool isLast = (bytes.bigEndian(1) & kLastBlock) != 0;
    position += static_cast<std::int64_t>(kHeader + bytes.bigEndian(3));
    if (isLast) return position <= source.size() ? std::optional(position) : std::nullopt;
  }
  return std::nullopt;
}

}  // namespace kolum::headers
