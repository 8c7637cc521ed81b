#include <kolum/filetype.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>

#include "api/guarded.h"
#include "filetype/extension_list.h"
#include "filetype/index.h"

using namespace kolum::filetype;

extern "C" {

MediaHashNode* g_pHashVideo[180] = {};
MediaHashNode* g_pHashMusic[100] = {};
MediaHashNode* g_pHashPicture[20] = {};
MediaHashNode* g_pHashPlaylist[10] = {};

int g_initHash = 0;

// Including the closing rows.
const uint64_t g_VideoFileInfoSize = 34;
const uint64_t g_SongFileInfoSize = 23;
const uint64_t g_PictureFileInfoSize = 34;

const int kScannedFlagNotReady = 0;
const int kScannedFlagFound = 1;
const int kScannedFlagThumbNotReady = 2;
const int kScannedFlagNotFound = 16;
const int kScannedFlagOversize = 17;
const int kScannedFlagPathInvalid = 18;
const int kScannedFlagLessThanMin = 20;
const int kScannedFlagInBlacklist = 21;
const int kScannedFlagNeedRegen = 22;
const int kScannedFlagNeedUpdate = 23;
const int kScannedFlagScanning = 66;
const int kScannedFlagParamError = 90;

}  // extern "C"

namespace {

template <std::size_t kSize>
void publishBuckets(MediaHashNode* (&published)[kSize], KindNumber kind) {
  std::ranges::copy(bucketsOf(kind), published);
}

bool buildAndPublishIndex() {
  g_initHash = 1;
  buildIndex();
  publishBuckets(g_pHashVideo, kVideo);
  publishBuckets(g_pHashMusic, kMusic);
  publishBuckets(g_pHashPicture, kPhoto);
  publishBuckets(g_pHashPlaylist, kPlaylist);
  return true;
}

void printIndex(const char* name, KindNumber kind) {
  std::printf("%s[] -> \n", name);
  for (const MediaHashNode* head : bucketsOf(kind)) {
    int depth = 0;
    for (const MediaHashNode* node = head; node != nullptr; node = node->next)
      std::printf("%s mappingIndex: %d, collision dep = %d\n", node->extension,
                  static_cast<int>(node->row), depth++);
  }
}

}  // namespace

int KoLUM_GetFilenameType(const char* fileName, unsigned int* row, unsigned int kinds,
                          unsigned int* tag) {
  [[maybe_unused]] static const bool kIndexIsBuilt = buildAndPublishIndex();
  if (fileName == nullptr) return 0;

  const char* dot = std::strrchr(fileName, '.');
  const Classified classified = dot != nullptr ? classify(fileName, dot, kinds) : Classified{};
  if (row != nullptr) *row = classified.row;
  if (tag != nullptr)
    *tag = dot != nullptr && (kinds & MEDIA_KIND_BIT_VIDEO) != 0 ? kinds >> 8 & 0xFF : 0;
  return classified.result;
}

int KoLUM_SetFileTypeUmaskInternal(unsigned int kind, long long mask) {
  if (kind >= kKindCount || mask < 0) return 1;
  setExclusions(static_cast<KindNumber>(kind), static_cast<std::uint64_t>(mask));
  return 0;
}

int KoLUM_PrintFileExtList() {
  return kolum::api::guarded(1, [] {
    const auto list = extensionList();
    if (!list) return 1;
    std::printf("%s\n", list->c_str());
    return 0;
  });
}

void dumpHashTable() {
  printIndex("g_pHashVideo", kVideo);
  std::printf("\n");
  printIndex("g_pHashMusic", kMusic);
  std::printf("\n");
  printIndex("g_pHashPicture", kPhoto);
  std::printf("\n");
  printIndex("g_pHashPlaylist", kPlaylist);
}
