// The readers of H.264 and MPEG audio headers.
#include <cstdint>
#include <cstdlib>
#include <span>

#include "read/headers/h264.h"
#include "read/headers/mpeg_audio.h"

namespace headers = kolum::headers;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span bytes(data, size);
  for (const auto& unit :
       {bytes, headers::spsOfConfiguration(bytes), headers::spsOfByteStream(bytes)}) {
    const auto sps = headers::readSps(unit);
    // FFmpeg multiplies the sides.
    if (sps && (sps->width <= 0 || sps->height <= 0 || sps->width > 16384 || sps->height > 16384))
      std::abort();
  }
  const std::size_t half = size / 2;
  headers::isPlainPicture(bytes.first(half), bytes.subspan(half));
  headers::beginsWithMp3Frames(bytes);
  return 0;
}
