#include "read/exif/extended_xmp.h"

#include <algorithm>

#include "read/exif/xmp_names.h"

namespace kolum::exif {

std::string joinedXmp(const std::vector<XmpPart>& parts, std::string_view guid) {
  std::vector<const XmpPart*> wanted;
  for (const XmpPart& part : parts)
    if (part.guid == guid) wanted.push_back(&part);
  if (wanted.empty() || wanted.front()->total > kLargestBlock) return {};
  std::ranges::stable_sort(wanted, {}, [](const XmpPart* part) { return part->offset; });
  const std::uint64_t total = wanted.front()->total;
  std::string whole;
  whole.reserve(total);
  for (const XmpPart* part : wanted) {
    if (part->total != total || part->offset != whole.size()) return {};
    whole += part->bytes;
  }
  return whole.size() == total ? whole : std::string();
}

bool mayHaveProperties(std::string_view packet) {
  constexpr std::string_view kDeclaration = "xmlns";
  constexpr std::size_t kLongestName = 100;
  for (std::size_t at = packet.find(kDeclaration); at != packet.npos;
       at = packet.find(kDeclaration, at)) {
    at = packet.find_first_of("'\"", at);
    if (at == packet.npos) break;
    const std::string_view rest = packet.substr(at + 1, kLongestName);
    const XmpNamespace space = namespaceOf(rest.substr(0, rest.find(packet[at])));
    if (space != XmpNamespace::kUnknown && space != XmpNamespace::kRdf) return true;
  }
  return false;
}

}  // namespace kolum::exif
