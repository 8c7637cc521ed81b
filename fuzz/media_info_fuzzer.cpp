#include <kolum/mediainfo.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz/memory_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const kolum::fuzz::MemoryFile file(data, size);
  const std::string path = file.path();
  MediaInfo* info = nullptr;
  double time = 0;
  const bool isDescribed = GetMediaInfo(path.c_str(), &info, 2, &time) == 0;
  if (isDescribed != (info != nullptr)) std::abort();
  Free_MediaInfo(info);
  getVideoKeyFrameTime(path.c_str(), 2, &time);
  return 0;
}
