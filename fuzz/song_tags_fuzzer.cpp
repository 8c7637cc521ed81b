// Reads the tags of the bytes as those of a song. The values keep what their header promises.
#include <fcntl.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "base/descriptor.h"
#include "fuzz/memory_file.h"
#include "isolation/wire.h"
#include "media/source.h"
#include "read/tags/song_tags.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const kolum::fuzz::MemoryFile file(data, size);
  const auto source = kolum::media::Source::adopt(
      kolum::Descriptor(open(file.path().c_str(), O_RDONLY | O_CLOEXEC)), "song");
  if (!source) std::abort();
  kolum::read::Findings findings;
  findings.songTags = kolum::tags::readSongTags(*source);
  // The decoder refuses values that no reader may give.
  const auto bytes = kolum::isolation::encode(findings);
  if (!kolum::isolation::decodeFindings(bytes)) std::abort();
  return 0;
}
