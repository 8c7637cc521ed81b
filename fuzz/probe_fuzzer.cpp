#include <kolum/video.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "fuzz/memory_file.h"

namespace {

template <std::size_t kSize>
void mustEnd(const char (&text)[kSize]) {
  if (std::memchr(text, '\0', kSize) == nullptr) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const kolum::fuzz::MemoryFile file(data, size);
  videoObject_st record;
  std::memset(&record, 0xFF, sizeof record);
  GetVideoMetadata1(file.folder().c_str(), file.name().c_str(), &record, 0);
  mustEnd(record.yearMonth);
  mustEnd(record.creationDate);
  mustEnd(record.mimeType);
  mustEnd(record.dlnaProfile);
  mustEnd(record.contentIdentifier);
  return 0;
}
