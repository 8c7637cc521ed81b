#include <kolum/audio.h>
#include <kolum/host.h>

#include <string_view>

#include "support/text.h"

namespace {

// In the order in which they win. Nothing but these spellings counts.
constexpr std::string_view kCoverNames[] = {
    "cover.jpg", "Cover.jpg", "folder.jpg", "Folder.jpg", "front.jpg", "Front.jpg",
};

}  // namespace

unsigned int KoLUM_CheckLocalAlbum(const char* folder, char* coverPath) try {
  if (folder == nullptr || coverPath == nullptr) return 1;
  for (const std::string_view name : kCoverNames) {
    const std::string path = kolum::joinPath(folder, name);
    if (KoUtil_IsFileExist(path.c_str()) == 0) continue;
    kolum::copyText(coverPath, kolum::kPathSize, path);
    return 0;
  }
  return 1;
} catch (...) {
  return 1;
}

unsigned int KoLUM_CheckSpecialCover(const char* fileName) {
  if (fileName == nullptr) return 1;
  // A prefix is enough, on purpose: "cover.jpg.bak" is no photo to show either.
  for (const std::string_view name : kCoverNames)
    if (std::string_view(fileName).starts_with(name)) return 0;
  return 1;
}
