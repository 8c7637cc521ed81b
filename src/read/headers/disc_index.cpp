#include "read/headers/disc_index.h"

#include <algorithm>
#include <vector>

#include "base/text.h"

namespace kolum::headers {

namespace {

std::string_view lastPart(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

media::DiscIndex readAny(std::string_view fileName, std::span<const std::uint8_t> bytes) {
  switch (indexKindOf(fileName)) {
    case IndexKind::kDvdTitles:
      return readDvdTitles(bytes);
    case IndexKind::kDvdTitleSet:
      return readDvdTitleSet(fileName, bytes);
    case IndexKind::kPlaylist:
      return readPlaylist(fileName, bytes);
    case IndexKind::kNone:
      break;
  }
  return {};
}

}  // namespace

IndexKind indexKindOf(std::string_view fileName) {
  if (equalsIgnoringCase(fileName, "VIDEO_TS.IFO") || equalsIgnoringCase(fileName, "VIDEO_TS.BUP"))
    return IndexKind::kDvdTitles;
  if (endsWithIgnoringCase(fileName, ".mpls")) return IndexKind::kPlaylist;
  const bool isIndex =
      endsWithIgnoringCase(fileName, ".IFO") || endsWithIgnoringCase(fileName, ".BUP");
  const auto file = media::titleSetFile(fileName);
  if (isIndex && file && file->titleSet > 0 && file->part == 0) return IndexKind::kDvdTitleSet;
  return IndexKind::kNone;
}

std::map<int, std::vector<std::string>> dvdIndexNames(const std::vector<std::string>& names) {
  std::map<int, std::vector<std::string>> found;
  for (const char* suffix : {".IFO", ".BUP"}) {
    for (const std::string& name : names) {
      const IndexKind kind = indexKindOf(name);
      const bool isDvd = kind == IndexKind::kDvdTitles || kind == IndexKind::kDvdTitleSet;
      if (!isDvd || !endsWithIgnoringCase(name, suffix)) continue;
      const auto set = media::titleSetFile(name);
      found[set ? set->titleSet : 0].push_back(name);
    }
  }
  return found;
}

media::DiscIndex readDiscIndex(std::string_view fileName, std::span<const std::uint8_t> bytes) {
  media::DiscIndex index;
  index.add(readAny(fileName, bytes.first(std::min(bytes.size(), kMostIndexBytes))));
  index.isIncomplete = index.isIncomplete || bytes.size() > kMostIndexBytes;
  index.bytes = bytes.size();
  return index;
}

media::DiscIndex readDiscIndex(const media::Source& source) {
  // One byte more shows that there is more.
  const auto size = std::clamp<std::int64_t>(source.size(), 0, kMostIndexBytes + 1);
  std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
  const std::ptrdiff_t count = source.readAt(0, bytes);
  bytes.resize(static_cast<std::size_t>(std::max<std::ptrdiff_t>(count, 0)));
  return readDiscIndex(lastPart(source.name()), bytes);
}

}  // namespace kolum::headers
