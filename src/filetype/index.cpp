#include "filetype/index.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <string_view>

#include "base/text.h"

namespace kolum::filetype {

namespace {

constexpr std::size_t kLongestExtension = 9;

// Rows 7 (".dts") and 10 (".ac3") of the songs: no mask includes them.
constexpr std::uint64_t kMusicExclusions = 0x240;

constexpr std::array<std::uint64_t, kKindCount> kBuiltInExclusions = {kMusicExclusions, 0, 0, 0};
std::array<std::uint64_t, kKindCount> masks = kBuiltInExclusions;

std::array<MediaHashNode*, 180> videoBuckets = {};
std::array<MediaHashNode*, 100> musicBuckets = {};
std::array<MediaHashNode*, 20> photoBuckets = {};
std::array<MediaHashNode*, 10> playlistBuckets = {};

// In the order in which the kinds are tried.
struct Kind {
  KindNumber number;
  unsigned interest;
  int result;
  std::span<MediaHashNode*> index;
};

constexpr std::array<Kind, kKindCount> kKinds = {{
    {kVideo, MEDIA_KIND_BIT_VIDEO, MEDIA_KIND_VIDEO, videoBuckets},
    {kMusic, MEDIA_KIND_BIT_MUSIC, MEDIA_KIND_MUSIC, musicBuckets},
    {kPhoto, MEDIA_KIND_BIT_PHOTO, MEDIA_KIND_PHOTO, photoBuckets},
    {kPlaylist, MEDIA_KIND_BIT_PLAYLIST, MEDIA_KIND_PLAYLIST, playlistBuckets},
}};

// Rows of the video table that stand for whole discs, by the names of their index files.
constexpr unsigned kDvdRow = 0;
constexpr unsigned kBlurayRow = 1;

// An extension in lower case with its hash, calculated once for all kinds.
class Extension {
 public:
  explicit Extension(std::string_view text) {
    for (const char c : text) *end_++ = fold(c);
  }

  std::size_t bucket(std::size_t buckets) const { return (hash_ & 0x7FFFFFFF) % buckets; }
  // The tables' extensions are in lower case.
  bool is(const char* known) const { return std::strcmp(folded_.data(), known) == 0; }

 private:
  char fold(char c) {
    const char lower = lowerCase(c);
    hash_ = hash_ * 31 + static_cast<std::uint32_t>(std::int32_t{static_cast<signed char>(lower)});
    return lower;
  }

  std::array<char, kLongestExtension + 1> folded_ = {};
  char* end_ = folded_.data();
  std::uint32_t hash_ = 0;
};

void append(MediaHashNode*& head, unsigned row, const char* extension) {
  MediaHashNode** end = &head;
  while (*end != nullptr) end = &(*end)->next;
  // Never freed: the index lives as long as the process.
  *end = new (std::nothrow) MediaHashNode{row, extension, nullptr};
}

std::optional<unsigned> findRow(const Kind& kind, const Extension& extension) {
  const MediaHashNode* node = kind.index[extension.bucket(kind.index.size())];
  while (node != nullptr && !extension.is(node->extension)) node = node->next;
  if (node == nullptr) return std::nullopt;
  return node->row;
}

bool isExcluded(const Kind& kind, unsigned row) {
  return (masks[kind.number] >> row & 1) != 0;
}

// A disc's index file counts under its full name only.
bool isAccepted(const Kind& kind, unsigned row, std::string_view fileName) {
  if (kind.number != kVideo) return true;
  if (row == kDvdRow) {
    return endsWithIgnoringCase(fileName, "video_ts.ifo") ||
           endsWithIgnoringCase(fileName, "vr_mangr.ifo");
  }
  return row != kBlurayRow || endsWithIgnoringCase(fileName, "index.bdmv");
}

}  // namespace

Classified classify(const char* fileName, const char* dot, unsigned kinds) {
  const std::size_t length = strnlen(dot, kLongestExtension + 1);
  if (length > kLongestExtension) return {};
  const Extension extension({dot, length});
  for (const Kind& kind : kKinds) {
    if ((kinds & kind.interest) == 0) continue;
    const auto row = findRow(kind, extension);
    if (!row) continue;
    // An excluded match ends the search: each extension is in one table only.
    if (isExcluded(kind, *row)) return {};
    return {isAccepted(kind, *row, fileName) ? kind.result : MEDIA_KIND_NONE, *row + 1};
  }
  return {};
}

void setExclusions(KindNumber kind, std::uint64_t rows) {
  masks[kind] = rows | kBuiltInExclusions[kind];
}

namespace {

bool fillBuckets() {
  for (const Kind& kind : kKinds) {
    const std::span<const MediaFileInfo> rows = rowsOf(kind.number);
    for (unsigned row = 0; row < rows.size(); ++row) {
      const char* extension = rows[row].extension;
      append(kind.index[Extension(extension).bucket(kind.index.size())], row, extension);
    }
  }
  return true;
}

}  // namespace

void buildIndex() {
  [[maybe_unused]] static const bool kIsBuilt = fillBuckets();
}

std::span<MediaHashNode* const> bucketsOf(KindNumber number) {
  const auto kind = std::find_if(kKinds.begin(), kKinds.end(),
                                 [&](const Kind& each) { return each.number == number; });
  return kind->index;
}

}  // namespace kolum::filetype
