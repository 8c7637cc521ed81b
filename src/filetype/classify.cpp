#include <kolum/filetype.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <mutex>
#include <new>
#include <span>
#include <string_view>

#include "support/text.h"

extern "C" {
MediaFileNode* g_pHashVideo[180] = {};
MediaFileNode* g_pHashMusic[100] = {};
MediaFileNode* g_pHashPicture[20] = {};
MediaFileNode* g_pHashPlaylist[10] = {};
int g_initHash = 0;
}

namespace {

constexpr std::size_t kLongestExtension = 9;

constexpr int kNone = 0;

// Bits of the kinds argument.
constexpr unsigned kVideoBit = 2;
constexpr unsigned kTagShift = 8;
constexpr unsigned kTagMask = 0xFF;

// Rows of the video table that only certain names may have.
constexpr unsigned kDvdRow = 0;
constexpr unsigned kBluRayRow = 1;

// Exclusions by kind number; they can be added to, never lifted: wanted.
constexpr std::array<uint64_t, 4> kBuiltInMasks = {0x240, 0, 0, 0};
std::array<std::atomic<uint64_t>, 4> g_masks = {kBuiltInMasks[0], kBuiltInMasks[1],
                                                kBuiltInMasks[2], kBuiltInMasks[3]};

struct Kind {
  int result;       // as classification answers it
  unsigned bit;     // of the kinds argument
  unsigned number;  // of its mask
  const char* indexName;
  const MediaFileInfo* table;
  std::span<MediaFileNode*> buckets;
};

// In the order in which a name is looked up.
const Kind kKinds[] = {
    {2, kVideoBit, 2, "g_pHashVideo", g_VideoFileInfo, g_pHashVideo},
    {1, 1, 0, "g_pHashMusic", g_SongFileInfo, g_pHashMusic},
    {3, 4, 1, "g_pHashPicture", g_PictureFileInfo, g_pHashPicture},
    {5, 8, 3, "g_pHashPlaylist", g_PlaylistFileInfo, g_pHashPlaylist},
};

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::size_t bucketOf(std::string_view extension, std::size_t bucketCount) {
  uint32_t hash = 0;
  for (const char c : extension) {
    hash = hash * 31 + static_cast<uint32_t>(static_cast<signed char>(lower(c)));
  }
  return (hash & 0x7FFFFFFF) % bucketCount;
}

// Puts a table's rows into its buckets, each at the end of its chain, so that chains keep its
// order.
void buildIndex(const Kind& kind) {
  for (MediaFileNode*& head : kind.buckets) head = nullptr;
  for (uint32_t row = 0; kind.table[row].extension != nullptr; ++row) {
    const char* extension = kind.table[row].extension;
    MediaFileNode** end = &kind.buckets[bucketOf(extension, kind.buckets.size())];
    while (*end != nullptr) end = &(*end)->next;
    *end = new (std::nothrow) MediaFileNode{row, extension, nullptr};
  }
}

void buildIndexesOnce() {
  static std::once_flag once;
  std::call_once(once, [] {
    g_initHash = 1;
    for (const Kind& kind : kKinds) buildIndex(kind);
  });
}

const MediaFileNode* find(const Kind& kind, std::string_view extension) {
  const MediaFileNode* node = kind.buckets[bucketOf(extension, kind.buckets.size())];
  while (node != nullptr && !kolum::equalsIgnoringCase(node->extension, extension))
    node = node->next;
  return node;
}

bool isExcluded(const Kind& kind, uint32_t row) {
  return (g_masks[kind.number] >> row & 1) != 0;
}

// Whether a name may have its row: the disc rows stand for a disc's index file only.
bool fitsRow(const Kind& kind, uint32_t row, std::string_view fileName) {
  if (kind.bit != kVideoBit) return true;
  if (row == kDvdRow) {
    return kolum::endsWithIgnoringCase(fileName, "video_ts.ifo") ||
           kolum::endsWithIgnoringCase(fileName, "vr_mangr.ifo");
  }
  return row != kBluRayRow || kolum::endsWithIgnoringCase(fileName, "index.bdmv");
}

// The first wanted kind whose table has the extension decides, even when it refuses.
int classify(std::string_view fileName, unsigned kinds, unsigned& row) {
  const std::size_t dot = fileName.rfind('.');
  if (dot == std::string_view::npos) return kNone;
  const std::string_view extension = fileName.substr(dot);
  if (extension.size() > kLongestExtension) return kNone;
  for (const Kind& kind : kKinds) {
    const MediaFileNode* node = (kinds & kind.bit) != 0 ? find(kind, extension) : nullptr;
    if (node == nullptr) continue;
    if (isExcluded(kind, node->row)) return kNone;
    row = node->row + 1;
    return fitsRow(kind, node->row, fileName) ? kind.result : kNone;
  }
  return kNone;
}

}  // namespace

extern "C" int KoLUM_GetFilenameType(const char* fileName, unsigned int* row, unsigned int kinds,
                                     unsigned int* tag) {
  buildIndexesOnce();
  if (fileName == nullptr) return kNone;
  unsigned foundRow = 0;
  const int result = classify(fileName, kinds, foundRow);
  // The tag byte goes back with any name that has a dot; without one there is nothing to look up.
  const bool hasDot = std::string_view(fileName).find('.') != std::string_view::npos;
  if (row != nullptr) *row = foundRow;
  if (tag != nullptr) *tag = hasDot && (kinds & kVideoBit) != 0 ? kinds >> kTagShift & kTagMask : 0;
  return result;
}

extern "C" int KoLUM_SetFileTypeUmaskInternal(unsigned int kind, long long mask) {
  if (kind >= g_masks.size() || mask < 0) return 1;
  g_masks[kind] = static_cast<uint64_t>(mask) | kBuiltInMasks[kind];
  return 0;
}

extern "C" void dumpHashTable(void) {
  for (const Kind& kind : kKinds) {
    if (&kind != kKinds) std::printf("\n");
    std::printf("%s[] -> \n", kind.indexName);
    for (const MediaFileNode* head : kind.buckets) {
      int depth = 0;
      for (const MediaFileNode* node = head; node != nullptr; node = node->next) {
        std::printf("%s mappingIndex: %d, collision dep = %d\n", node->extension,
                    static_cast<int>(node->row), depth++);
      }
    }
  }
}
