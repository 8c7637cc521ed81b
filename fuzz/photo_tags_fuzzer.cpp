// Reads the bytes as a photo with tags. Whatever they say, the tags are within their limits and
// survive the way from a worker to its host.
#include <fcntl.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "base/descriptor.h"
#include "fuzz/memory_file.h"
#include "isolation/wire.h"
#include "media/source.h"
#include "read/exif/photo_tags.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const kolum::fuzz::MemoryFile file(data, size);
  const auto source = kolum::media::Source::adopt(
      kolum::Descriptor(open(file.path().c_str(), O_RDONLY | O_CLOEXEC)), "photo.jpg");
  if (!source) std::abort();
  kolum::read::Findings findings;
  findings.photoTags = kolum::exif::readPhotoTags(*source);
  const auto bytes = kolum::isolation::encode(findings);
  const auto decoded = kolum::isolation::decodeFindings(bytes);
  if (!decoded || kolum::isolation::encode(*decoded) != bytes) std::abort();
  return 0;
}
