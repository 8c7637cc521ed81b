#include "artwork/system_thumbnails.h"

#include <fcntl.h>
#include <kolum/host.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string_view>

#include "base/log.h"
#include "base/text.h"

namespace kolum::artwork {

namespace {

constexpr char kSource[] = "kolum_util";
constexpr char kRemove[] = "removeSystemThumbnail";
constexpr char kSave[] = "saveLastBuildTime";

constexpr mode_t kStampMode = 0666;

std::string dataDir() {
  std::string dir;
  KoUtil_GetDataDir(dir);
  return dir;
}

// Whether a relative path leads to something below its start: neither to the start itself nor
// outside. Removing a folder tree makes the check necessary.
bool leadsBelow(std::string_view path) {
  bool below = false;
  while (!path.empty()) {
    const std::string_view part = path.substr(0, path.find('/'));
    path.remove_prefix(std::min(path.size(), part.size() + 1));
    if (part == "..") return false;
    if (!part.empty() && part != ".") below = true;
  }
  return below;
}

void emptyFolder(const std::string& path) {
  if (isFolderExist(path.c_str()) != 0 && koremove2(path.c_str()) != 0) {
    KOLUM_LOG_AS(kSource, kRemove, "Remove %s failed.\n", path.c_str());
  }
  if (isFolderExist(path.c_str()) == 0) komkdir(path.c_str());
}

// Never blocks: a pipe without a reader is refused.
void writeStamp(const std::string& path) {
  const int file =
      open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_CLOEXEC, kStampMode);
  if (file < 0) {
    KOLUM_LOG_AS(kSource, kSave, "Open %s failed.\n", path.c_str());
    return;
  }
  dprintf(file, "%lu", static_cast<unsigned long>(time(nullptr)));
  close(file);
}

}  // namespace

bool removeSystemThumbnails(const char* folder) {
  if (!leadsBelow(folder)) return false;
  const std::string dir = dataDir();
  if (dir.empty()) return false;
  const std::string path = dir + "/" + folder + "/";
  if (path.size() >= kPathSize) return false;
  emptyFolder(path);
  return true;
}

void saveStamp(const char* stampFile) {
  writeStamp(joinPath(dataDir() + "/", stampFile));
}

}  // namespace kolum::artwork
