#include "video/disc.h"

#include <dirent.h>
#include <kolum/datetime.h>
#include <kolum/host.h>
#include <kolum/identifiers.h>
#include <kolum/video.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "support/log.h"
#include "support/shell.h"
#include "support/text.h"

namespace kolum::video {

namespace {

constexpr std::string_view kStreamSuffix = ".m2ts";

struct DirectoryCloser {
  void operator()(DIR* directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, DirectoryCloser>;

bool hasSuffix(std::string_view name, std::string_view extension) {
  const std::string_view suffix = extensionOf(name);
  // A longer suffix that begins with the extension counts too; hosts rely on it.
  return !suffix.empty() && equalsIgnoringCase(suffix.substr(0, extension.size()), extension);
}

std::optional<std::int64_t> regularFileSize(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) {
    // Hosts' log filters know this line by its number.
    std::fprintf(stderr, "[%s:%d] ", kMediaSource, 1594);
    std::perror("stat");
    return std::nullopt;
  }
  if (!S_ISREG(status.st_mode)) return std::nullopt;
  return status.st_size;
}

// The host finds FIRST in the path that it is to write.
std::optional<MainTitle> dvdTitle(const std::string& folder, std::string_view first,
                                  std::uint32_t containerFormat) {
  char path[kPathSize] = {};
  copyText(path, sizeof path, first);
  MainTitle title;
  if (DVDGetMainVTSNo(folder.c_str(), path, sizeof path, 0, &title.size, 0) != 0)
    return std::nullopt;
  title.path = path;
  title.containerFormat = containerFormat;
  return title;
}

std::optional<MainTitle> blurayTitle(const std::string& streamFolder,
                                     std::uint32_t containerFormat) {
  auto path = largestFile(streamFolder, kStreamSuffix);
  if (!path) return std::nullopt;
  return MainTitle{.path = std::move(*path), .containerFormat = containerFormat};
}

// FOLDER with its closing "/".
bool isMountPoint(const std::string& folder) {
  struct stat inside = {};
  struct stat above = {};
  return stat(folder.c_str(), &inside) == 0 && stat((folder + "..").c_str(), &above) == 0 &&
         inside.st_dev != above.st_dev;
}

// Nothing can be done about a failure: the image stays mounted, and its folder with it.
void runUnmount(const std::string& command) {
  if (std::system(command.c_str()) != 0) return;
}

}  // namespace

Source sourceOf(std::string_view fileName) {
  if (fileName == "VIDEO_TS.IFO") return Source::kDvdFolder;
  if (fileName == "index.bdmv") return Source::kBlurayFolder;
  if (endsWithIgnoringCase(fileName, ".iso")) return Source::kImage;
  return Source::kFile;
}

std::optional<MainTitle> dvdFolderTitle(const std::string& folder) {
  return dvdTitle(folder, folder, FORMAT_DVDIFO);
}

std::optional<MainTitle> blurayFolderTitle(const std::string& folder) {
  return blurayTitle(joinPath(folder, "STREAM/"), FORMAT_BDBDMV);
}

std::optional<MainTitle> imageTitle(const std::string& mountFolder) {
  if (auto title = dvdTitle(mountFolder, "", FORMAT_DVDISO)) return title;
  return blurayTitle(joinPath(mountFolder, "BDMV/STREAM/"), FORMAT_BDISO);
}

std::optional<std::string> largestFile(const std::string& folder, std::string_view extension) {
  const Directory directory(opendir(folder.c_str()));
  if (directory == nullptr) return std::nullopt;

  std::optional<std::string> largest;
  std::int64_t largestSize = 0;
  while (const dirent* entry = readdir(directory.get())) {
    if (!hasSuffix(entry->d_name, extension)) continue;
    std::string path = folder + entry->d_name;
    // A path that no path buffer holds could not be handed on whole.
    if (path.size() >= kPathSize) continue;
    const auto size = regularFileSize(path);
    if (!size || *size < largestSize) continue;
    largestSize = *size;
    largest = std::move(path);
  }
  return largest;
}

MountedImage::MountedImage(std::string folder)
    : folder_(std::move(folder)), unmountCommand_("umount " + folder_) {}

std::unique_ptr<MountedImage> MountedImage::mount(const std::string& imagePath,
                                                  MountFolderFailure onFolderFailure) {
  constexpr mode_t kOwnerOnly = 0600;
  // All that needs memory comes first: once mounted, nothing may fail before there is an owner.
  std::unique_ptr<MountedImage> image(new MountedImage(
      "/tmp/Media_mount_" + std::to_string(static_cast<int>(getUniqueNumer())) + "/"));
  const char* folder = image->folder_.c_str();
  const std::string command = "mount -o loop,ro " + shellWord(imagePath) + " " + folder;

  const bool isOurs = mkdir(folder, kOwnerOnly) == 0;
  if (!isOurs && onFolderFailure == MountFolderFailure::kGiveUp) return nullptr;
  image->hasFolder_ = true;
  image->isMounted_ = std::system(command.c_str()) == 0;
  if (image->isMounted_) return image;
  // The tool may fail after it has mounted: when it runs out of descriptors, say.
  if (isOurs && isMountPoint(image->folder_)) umount2(folder, 0);
  return nullptr;
}

MountedImage::~MountedImage() {
  if (isMounted_) runUnmount(unmountCommand_);
  // Never a recursive removal: what is still mounted is not ours to delete.
  if (hasFolder_) rmdir(folder_.c_str());
}

}  // namespace kolum::video

void get_maxsizefilename(char* dir, const char* ext) try {
  if (dir == nullptr) return;
  const std::string folder = dir;
  dir[0] = '\0';
  if (ext == nullptr) return;
  if (const auto path = kolum::video::largestFile(folder, ext))
    kolum::copyText(dir, kolum::kPathSize, *path);
} catch (...) {
  dir[0] = '\0';
}
