// Reads the bytes as a DSD file: its chunks and tags, as the library and the tool see them.
#include <kolum/audio.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "base/xml_node.h"
#include "dsf2flac/document.h"
#include "dsf2flac/dsd_file.h"
#include "fuzz/memory_file.h"
#include "read/tags/dsf_tags.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const kolum::fuzz::MemoryFile file(data, size);
  if (const auto source = kolum::media::Source::open(file.path()))
    kolum::tags::readDsfTags(*source);
  const auto facts = kolum::dsf2flac::readDsdFile(file.path());
  if (!facts) return 0;
  // Whatever the tags hold, the library can read the tool's document.
  const std::string document = kolum::dsf2flac::documentOf(*facts);
  if (document.size() > kolum::dsf2flac::kLongestDocument) std::abort();
  if (XMLNode::parseString(document, "ID3TAG").isEmpty()) std::abort();
  return 0;
}
