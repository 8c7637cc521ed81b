// What is looked at before FFmpeg opens a file: its signature and its tags.
#include <cstdint>
#include <cstdlib>

#include "fuzz/memory_file.h"
#include "media/source.h"
#include "read/headers/id3v2.h"
#include "read/headers/signatures.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const kolum::fuzz::MemoryFile file(data, size);
  const auto source = kolum::media::Source::open(file.path());
  if (!source) std::abort();
  kolum::headers::demuxerOf(*source);
  kolum::headers::blankInflatingTags(*source);
  kolum::headers::demuxerOf(*source);
  return 0;
}
