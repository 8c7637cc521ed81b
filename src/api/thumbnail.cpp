#include <kolum/frame.h>
#include <kolum/host.h>
#include <kolum/thumbnail.h>

#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>

#include "api/guarded.h"
#include "artwork/artwork.h"
#include "artwork/system_thumbnails.h"
#include "base/exec_command.h"
#include "base/files.h"
#include "base/log.h"

namespace api = kolum::api;
namespace artwork = kolum::artwork;

const char* const kVideoPosterExtList[3] = {".jpeg", ".png", ".jpg"};
const int kVideoPosterExtNum = 3;

const char kThumbLastBuildTime[] = ".system/tmp/thumb_lastbuilttime.tmp";
const char kFaceLastBuildTime[] = ".system/tmp/face_lastbuilttime.tmp";
const char kImgClassifyLastBuildTime[] = ".system/tmp/imgClassify_lastbuilttime.tmp";

namespace {

constexpr char kSource[] = "kolum_util";

// A relative path that begins with "-" would be taken for an option.
std::string asOperand(const char* path) {
  return *path == '-' ? std::string("./") + path : path;
}

int copyAndOpen(const char* src, const char* dst) {
  const std::string from = asOperand(src);
  const std::string to = asOperand(dst);
  const char* copy[] = {"/bin/cp", from.c_str(), to.c_str(), nullptr};
  KoUtil_ExecSync(copy, 0);
  const char* chmod[] = {"/bin/chmod", "666", to.c_str(), nullptr};
  return KoUtil_ExecSync(chmod, 0);
}

void copyOut(const std::string& text, char* out) {
  std::memcpy(out, text.c_str(), text.size() + 1);
}

// Why a folder's name cannot be formed; null if it can.
const char* faultOf(unsigned mediaType, long id, int size, const char* folderName) {
  constexpr unsigned kMediaTypeMax = 20;
  constexpr int kFolderNameSizeMin = 4;
  if (mediaType > kMediaTypeMax) return "Invalid play media type.\n";
  if (id < 1) return "Invalid id.\n";
  if (folderName == nullptr) return "Invalid folder\n";
  if (size < kFolderNameSizeMin) return "Invalid folder name length\n";
  return nullptr;
}

}  // namespace

int ExecCommand(const char** argv, int returnExitCode) {
  if (argv == nullptr || argv[0] == nullptr) return 1;
  return kolum::execCommand(argv, returnExitCode != 0);
}

int isFileExist(const char* path) {
  return path != nullptr && kolum::exists(path) ? 1 : 0;
}

int copyAndChmod(const char* src, const char* dst) {
  return api::guarded(-1, [&] {
    if (src == nullptr || dst == nullptr) return -1;
    return copyAndOpen(src, dst);
  });
}

int LUM_IsTranscodeFileExist(const char* folder, const char* fileName) {
  return api::guarded(-1, [&] {
    if (folder == nullptr || fileName == nullptr) return -1;
    return artwork::hasTranscodedCopy(folder, fileName) ? 0 : -1;
  });
}

int LUM_CheckMusicArtistThumbnail(const char* base, const char* artist, char* relPath) {
  return api::guarded(0, [&] {
    if (base == nullptr || artist == nullptr || relPath == nullptr) return 0;
    const auto picture = artwork::artistPicture(artist);
    if (!picture) return 0;
    copyOut(*picture, relPath);
    return artwork::hasArtistPicture(base, *picture) ? 1 : 0;
  });
}

int LUM_CheckMusicAlbumArt(const char* base, const char* artist, const char* album, char* relPath) {
  return api::guarded(0, [&] {
    if (base == nullptr || artist == nullptr || album == nullptr || relPath == nullptr) return 0;
    const auto names = artwork::albumNames(artist, album);
    if (!names) return 0;
    copyOut(names->thumbnail(), relPath);
    return artwork::hasAlbumThumbnail(base, *names, g_localWorkingPath) ? 1 : 0;
  });
}

int getSystemThumbFolderName(unsigned int mediaType, long id, int size, char* folderName) {
  if (const char* fault = faultOf(mediaType, id, size, folderName)) {
    KOLUM_LOG(kSource, "%s", fault);
    return 1;
  }
  std::snprintf(folderName, static_cast<std::size_t>(size), "%x%02x/", mediaType,
                static_cast<unsigned>(id & 0xFF));
  return 0;
}

int removeSystemThumbnail(const char* folder) {
  return api::guarded(
      1, [&] { return folder != nullptr && artwork::removeSystemThumbnails(folder) ? 0 : 1; });
}

int saveLastBuildTime(const char* stampFile) {
  static std::mutex writing;
  return api::guarded(0, [&] {
    const std::lock_guard lock(writing);
    artwork::saveStamp(stampFile != nullptr ? stampFile : "");
    return 0;
  });
}
