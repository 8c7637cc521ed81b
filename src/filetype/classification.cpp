#include <kolum/filetype.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <new>
#include <optional>
#include <span>
#include <string_view>

#include "support/text.h"

extern "C" {

MediaHashNode* g_pHashVideo[180] = {};
MediaHashNode* g_pHashMusic[100] = {};
MediaHashNode* g_pHashPicture[20] = {};
MediaHashNode* g_pHashPlaylist[10] = {};

int g_initHash = 0;
}

namespace kolum::filetype {

namespace {

constexpr std::size_t kLongestExtension = 9;

// Rows 7 (".dts") and 10 (".ac3") of the songs, whose exclusion no mask lifts.
constexpr std::uint64_t kMusicExclusions = 0x240;

constexpr std::size_t kKindCount = 4;

constexpr std::array<std::uint64_t, kKindCount> kBuiltInExclusions = {kMusicExclusions, 0, 0, 0};
std::array<std::uint64_t, kKindCount> masks = kBuiltInExclusions;

// Kinds in the order in which they are tried and printed.
struct Kind {
  unsigned number;  // MEDIA_KIND_MASK_*
  unsigned interest;
  int result;
  const MediaFileInfo* table;
  std::span<MediaHashNode*> index;
};

constexpr std::array<Kind, kKindCount> kKinds = {{
    {MEDIA_KIND_MASK_VIDEO, MEDIA_KIND_BIT_VIDEO, MEDIA_KIND_VIDEO, g_VideoFileInfo, g_pHashVideo},
    {MEDIA_KIND_MASK_MUSIC, MEDIA_KIND_BIT_MUSIC, MEDIA_KIND_MUSIC, g_SongFileInfo, g_pHashMusic},
    {MEDIA_KIND_MASK_PHOTO, MEDIA_KIND_BIT_PHOTO, MEDIA_KIND_PHOTO, g_PictureFileInfo,
     g_pHashPicture},
    {MEDIA_KIND_MASK_PLAYLIST, MEDIA_KIND_BIT_PLAYLIST, MEDIA_KIND_PLAYLIST, g_PlaylistFileInfo,
     g_pHashPlaylist},
}};

// Rows of the video table that stand for whole discs, by the names of their index files.
constexpr unsigned kDvdRow = 0;
constexpr unsigned kBlurayRow = 1;

// An extension as the index knows it, folded and hashed once for all kinds.
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
  // Kept for the life of the process.
  *end = new (std::nothrow) MediaHashNode{row, extension, nullptr};
}

void buildIndex() {
  g_initHash = 1;
  for (const Kind& kind : kKinds) std::fill(kind.index.begin(), kind.index.end(), nullptr);
  for (const Kind& kind : kKinds) {
    for (unsigned row = 0; kind.table[row].extension != nullptr; ++row) {
      const char* extension = kind.table[row].extension;
      append(kind.index[Extension(extension).bucket(kind.index.size())], row, extension);
    }
  }
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

// Index files of discs count under their own names only.
bool isAccepted(const Kind& kind, unsigned row, std::string_view fileName) {
  if (kind.number != MEDIA_KIND_MASK_VIDEO) return true;
  if (row == kDvdRow) {
    return endsWithIgnoringCase(fileName, "video_ts.ifo") ||
           endsWithIgnoringCase(fileName, "vr_mangr.ifo");
  }
  return row != kBlurayRow || endsWithIgnoringCase(fileName, "index.bdmv");
}

struct Classified {
  int result = MEDIA_KIND_NONE;
  unsigned row = 0;
};

Classified classify(const char* fileName, const char* dot, unsigned kinds) {
  const std::size_t length = strnlen(dot, kLongestExtension + 1);
  if (length > kLongestExtension) return {};
  const Extension extension({dot, length});
  for (const Kind& kind : kKinds) {
    if ((kinds & kind.interest) == 0) continue;
    const auto row = findRow(kind, extension);
    if (!row) continue;
    // An excluded match ends the search: the extension is in one table only.
    if (isExcluded(kind, *row)) return {};
    return {isAccepted(kind, *row, fileName) ? kind.result : MEDIA_KIND_NONE, *row + 1};
  }
  return {};
}

}  // namespace

}  // namespace kolum::filetype

using namespace kolum::filetype;

int KoLUM_GetFilenameType(const char* fileName, unsigned int* row, unsigned int kinds,
                          unsigned int* tag) {
  [[maybe_unused]] static const bool kIndexIsBuilt = (buildIndex(), true);
  if (fileName == nullptr) return 0;

  const char* dot = std::strrchr(fileName, '.');
  const Classified classified = dot != nullptr ? classify(fileName, dot, kinds) : Classified{};
  if (row != nullptr) *row = classified.row;
  if (tag != nullptr)
    *tag = dot != nullptr && (kinds & MEDIA_KIND_BIT_VIDEO) != 0 ? kinds >> 8 & 0xFF : 0;
  return classified.result;
}

int KoLUM_SetFileTypeUmaskInternal(unsigned int kind, long long mask) {
  if (kind >= masks.size() || mask < 0) return 1;
  masks[kind] = static_cast<std::uint64_t>(mask) | kBuiltInExclusions[kind];
  return 0;
}
