// Reads the bytes after the first as an index file of a disc; the first chooses which kind.
// Whatever they say, the answer is within its limits and survives the way from a worker to its
// host, and a disc can be made of it.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "isolation/wire.h"
#include "read/headers/disc_index.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr const char* kNames[] = {"VIDEO_TS.IFO", "VTS_01_0.IFO", "00001.mpls"};
  if (size == 0) return 0;
  const char* name = kNames[data[0] % std::size(kNames)];
  kolum::read::Findings findings;
  findings.disc = kolum::headers::readDiscIndex(name, std::span(data, size).subspan(1));
  const auto bytes = kolum::isolation::encode(findings);
  const auto decoded = kolum::isolation::decodeFindings(bytes);
  if (!decoded || kolum::isolation::encode(*decoded) != bytes) std::abort();
  kolum::media::DiscIndex disc = *decoded->disc;
  disc.mainFile = "VTS_01_1.VOB";
  const kolum::media::Disc found = kolum::media::discOf(disc);
  if (found.mainTitle && *found.mainTitle > found.titles.size()) std::abort();
  return 0;
}
