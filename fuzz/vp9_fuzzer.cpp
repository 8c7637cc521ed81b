// Reads the header of a VP9 picture: what it reports is one of FFmpeg's formats for its profile, in
// a sane size, and only a whole header is read.
#include "read/headers/vp9.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // On the heap and of this size, so that a read beyond its end is noticed.
  const std::vector<std::uint8_t> packet(data, data + size);
  const auto found = kolum::headers::readVp9KeyFrame(packet);
  if (!found) return 0;
  require(found->width >= 1 && found->width <= 8192);
  require(found->height >= 1 && found->height <= 8192);
  require(found->profile >= 0 && found->profile <= 3);
  const std::string_view format = found->pixelFormat;
  require(format.ends_with("le") == (found->profile >= 2));
  require(format.starts_with("yuv420p") == (found->profile % 2 == 0));
  require(!kolum::headers::readVp9KeyFrame(std::span(packet).first(10)));
  return 0;
}
