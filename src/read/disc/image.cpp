#include "read/disc/image.h"

#include <dirent.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <exception>
#include <filesystem>
#include <thread>

#include "base/child_process.h"
#include "base/shell.h"
#include "media/dates.h"

namespace kolum::disc {

namespace {

constexpr char kFolderPrefix[] = "/tmp/Media_mount_";
constexpr mode_t kFolderMode = 0600;
constexpr std::chrono::seconds kMountTime{60};

// Opens a folder and locks it; not open if the folder is in use.
Descriptor lockFolder(const std::string& folder) {
  Descriptor lock(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW));
  if (lock.isOpen() && flock(lock.get(), LOCK_EX | LOCK_NB) != 0) lock.reset();
  return lock;
}

// FOLDER with its trailing "/".
bool isMountPoint(const std::string& folder) {
  struct stat inside = {};
  struct stat above = {};
  return stat(folder.c_str(), &inside) == 0 && stat((folder + "..").c_str(), &above) == 0 &&
         inside.st_dev != above.st_dev;
}

// FOLDER without its trailing "/".
bool isOurs(const std::string& folder) {
  struct stat status = {};
  return lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
         status.st_uid == geteuid() && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

bool isMountFolder(const std::string& folder) {
  struct stat status = {};
  return isOurs(folder) && lstat(folder.c_str(), &status) == 0 &&
         (status.st_mode & ALLPERMS) == kFolderMode;
}

// Unmounts an image left by a process that ended and had no mount namespace of its own.
void unmountLeftOver(const std::string& folder) {
  if (!isMountPoint(folder + "/") || !lockFolder(folder).isOpen()) return;
  umount2(folder.c_str(), MNT_DETACH | UMOUNT_NOFOLLOW);
}

// Removes the folders of processes that were killed. Folders in use are locked.
void removeLeftOvers() {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/tmp", error)) {
    const std::string folder = entry.path().string();
    if (!folder.starts_with(kFolderPrefix)) continue;
    unmountLeftOver(folder);
    if (!isMountFolder(folder)) continue;
    if (const Descriptor lock = lockFolder(folder); lock.isOpen()) rmdir(folder.c_str());
  }
}

// The mount tool would block on a pipe.
bool canBeMounted(const std::string& image) {
  struct stat status = {};
  if (stat(image.c_str(), &status) != 0) return true;  // the tool says what is wrong
  return S_ISREG(status.st_mode) || S_ISBLK(status.st_mode);
}

}  // namespace

MountedImage::MountedImage(std::string folder)
    : folder_(std::move(folder)), unmountCommand_("umount " + folder_) {}

bool MountedImage::makeFolder(MountFolderFailure onFailure) {
  const std::string bare = folder_.substr(0, folder_.size() - 1);
  const bool isNew = mkdir(bare.c_str(), kFolderMode) == 0;
  if (!isNew && (onFailure == MountFolderFailure::kGiveUp || !isOurs(bare))) return false;
  folderLock_ = lockFolder(bare);
  // Removing the folder of a process that uses it would end that process's mount, too.
  hasFolder_ = isNew || folderLock_.isOpen();
  return true;
}

std::unique_ptr<MountedImage> MountedImage::mount(const std::string& imagePath,
                                                  MountFolderFailure onFolderFailure) {
  // All allocations come first: once mounted, nothing may fail before there is an owner.
  std::unique_ptr<MountedImage> image(new MountedImage(
      kFolderPrefix + std::to_string(static_cast<int>(media::uniqueNumber())) + "/"));
  const char* folder = image->folder_.c_str();
  const std::string command = "mount -o loop,ro " + shellWord(imagePath) + " " + folder;
  removeLeftOvers();
  if (!canBeMounted(imagePath) || !image->makeFolder(onFolderFailure)) return nullptr;
  const bool wasMounted = isMountPoint(image->folder_);
  image->isMounted_ = runShell(command, kMountTime) == 0;
  if (image->isMounted_) {
    // Programs on an image must not run, least of all with other privileges.
    ::mount(nullptr, folder, nullptr,
            MS_REMOUNT | MS_BIND | MS_RDONLY | MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr);
    image->mountLock_ = lockFolder(image->folder_);
    return image;
  }
  // The tool may fail after mounting, for example when it runs out of descriptors.
  if (!wasMounted && isMountPoint(image->folder_)) umount2(folder, 0);
  return nullptr;
}

MountedImage::~MountedImage() {
  // The lock would keep the mount busy.
  mountLock_.reset();
  // A failure cannot be handled: the image stays mounted, and its folder stays.
  if (isMounted_) runShell(unmountCommand_, kMountTime);
  // Never a recursive removal: anything still mounted is not ours to delete.
  if (hasFolder_) rmdir(folder_.c_str());
}

void inPrivateMounts(const std::function<void()>& body) {
  std::exception_ptr failure;
  std::thread([&] {
    try {
      // If either is not allowed, everybody sees the mounts, and they end with the image's owner.
      if (unshare(CLONE_NEWNS) == 0) ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
      body();
    } catch (...) {
      failure = std::current_exception();
    }
  }).join();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace kolum::disc
