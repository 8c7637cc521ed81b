#include <fcntl.h>
#include <kolum/host.h>
#include <kolum/thumbnail.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <exception>
#include <string>
#include <string_view>

#include "support/log.h"
#include "support/text.h"

const char kThumbLastBuildTime[] = ".system/tmp/thumb_lastbuilttime.tmp";
const char kFaceLastBuildTime[] = ".system/tmp/face_lastbuilttime.tmp";
const char kImgClassifyLastBuildTime[] = ".system/tmp/imgClassify_lastbuilttime.tmp";

namespace {

constexpr char kSource[] = "kolum_util";
constexpr char kRemove[] = "removeSystemThumbnail";
constexpr char kSave[] = "saveLastBuildTime";

constexpr int kSuccess = 0;
constexpr int kFailure = 1;

constexpr unsigned kMediaTypeMax = 20;
constexpr int kFolderNameSizeMin = 4;
constexpr mode_t kStampMode = 0666;

pthread_mutex_t g_stampLock = PTHREAD_MUTEX_INITIALIZER;

std::string dataDir() {
  std::string dir;
  KoUtil_GetDataDir(dir);
  return dir;
}

// Whether a relative path leads to something below its start: not the start itself, nor beside it.
// Removing a folder is not the place to take such a path at its word.
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

int removeThumbnails(const char* folder) {
  if (!leadsBelow(folder)) return kFailure;
  const std::string dir = dataDir();
  if (dir.empty()) return kFailure;
  const std::string path = dir + "/" + folder + "/";
  if (path.size() >= kolum::kPathSize) return kFailure;
  emptyFolder(path);
  return kSuccess;
}

// Never waits: a pipe without a reader is no file to write to.
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

void saveStamp(const char* stampFile) noexcept try {
  writeStamp(kolum::joinPath(dataDir() + "/", stampFile));
} catch (const std::exception&) {
  // As for any file that cannot be written, the result does not tell.
}

}  // namespace

int getSystemThumbFolderName(unsigned int mediaType, long id, int size, char* folderName) {
  if (mediaType > kMediaTypeMax) {
    KOLUM_LOG(kSource, "Invalid play media type.\n");
    return kFailure;
  }
  if (id < 1) {
    KOLUM_LOG(kSource, "Invalid id.\n");
    return kFailure;
  }
  if (folderName == nullptr) {
    KOLUM_LOG(kSource, "Invalid folder\n");
    return kFailure;
  }
  if (size < kFolderNameSizeMin) {
    KOLUM_LOG(kSource, "Invalid folder name length\n");
    return kFailure;
  }
  std::snprintf(folderName, static_cast<std::size_t>(size), "%x%02x/", mediaType,
                static_cast<unsigned>(id & 0xFF));
  return kSuccess;
}

int removeSystemThumbnail(const char* folder) try {
  if (folder == nullptr) return kFailure;
  return removeThumbnails(folder);
} catch (const std::exception&) {
  return kFailure;
}

int saveLastBuildTime(const char* stampFile) {
  pthread_mutex_lock(&g_stampLock);
  saveStamp(stampFile != nullptr ? stampFile : "");
  return pthread_mutex_unlock(&g_stampLock);
}
