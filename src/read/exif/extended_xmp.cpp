#include "read/exif/extended_xmp.h"

#include <algorithm>

namespace kolum::exif {

std::string joinedXmp(const std::vector<XmpPart>& parts, std::string_view guid) {
  std::vector<const XmpPart*> wanted;
  for (const XmpPart& part : parts)
    if (part.guid == guid) wanted.push_back(&part);
  if (wanted.empty() || wanted.front()->total > kLargestBlock) return {};
  std::ranges::stable_sort(wanted, {}, [](const XmpPart* part) { return part->offset; });
  const std::uint64_t total = wanted.front()->total;
  std::string whole;
  for (const XmpPart* part : wanted) {
    if (part->total != total || part->offset != whole.size()) return {};
    whole += part->bytes;
  }
  return whole.size() == total ? whole : std::string();
}

}  // namespace kolum::exif
