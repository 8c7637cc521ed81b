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

// Opens a folder and locks it; none when somebody uses it.
Descriptor lockFolder(const std::string& folder) {
  Descriptor lock(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW));
  if (lock.isOpen() && flock(lock.get(), LOCK_EX | LOCK_NB) != 0) lock.reset();
  return lock;
}

// FOLDER with its closing "/".
bool isMountPoint(const std::string& folder) {
  struct stat inside = {};
  struct stat above = {};
  return stat(folder.c_str(), &inside) == 0 && stat((folder + "..").c_str(), &above) == 0 &&
         inside.st_dev != above.st_dev;
}

// FOLDER without its closing "/".
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

// What was mounted by a process that has ended without a namespace of its own.
void unmountLeftOver(const std::string& folder) {
  if (!isMountPoint(folder + "/") || !lockFolder(folder).isOpen()) return;
  umount2(folder.c_str(), MNT_DETACH | UMOUNT_NOFOLLOW);
}

// The folders of processes that were killed. Those in use are locked.
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

// A pipe would keep the mount tool waiting.
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
  hasFolder_ = true;
  return true;
}

std::unique_ptr<MountedImage> MountedImage::mount(const std::string& imagePath,
                                                  MountFolderFailure onFolderFailure) {
  // All that needs memory comes first: once mounted, nothing may fail before there is an owner.
  std::unique_ptr<MountedImage> image(new MountedImage(
      kFolderPrefix + std::to_string(static_cast<int>(media::uniqueNumber())) + "/"));
  const char* folder = image->folder_.c_str();
  const std::string command = "mount -o loop,ro " + shellWord(imagePath) + " " + folder;
  removeLeftOvers();
  if (!canBeMounted(imagePath) || !image->makeFolder(onFolderFailure)) return nullptr;
  const bool wasMounted = isMountPoint(image->folder_);
  image->isMounted_ = runShell(command, kMountTime) == 0;
  if (image->isMounted_) {
    // Programs of an image are not to be run, least of all with other rights.
    ::mount(nullptr, folder, nullptr,
            MS_REMOUNT | MS_BIND | MS_RDONLY | MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr);
    image->mountLock_ = lockFolder(image->folder_);
    return image;
  }
  // The tool may fail after it has mounted: when it runs out of descriptors, say.
  if (!wasMounted && isMountPoint(image->folder_)) umount2(folder, 0);
  return nullptr;
}

MountedImage::~MountedImage() {
  // The lock would keep the mount busy.
  mountLock_.reset();
  // Nothing can be done about a failure: the image stays mounted, and its folder with it.
  if (isMounted_) runShell(unmountCommand_, kMountTime);
  // Never a recursive removal: what is still mounted is not ours to delete.
  if (hasFolder_) rmdir(folder_.c_str());
}

void inPrivateMounts(const std::function<void()>& body) {
  std::exception_ptr failure;
  std::thread([&] {
    try {
      // Where either is not allowed, mounts are seen by all and end with the image's owner.
      if (unshare(CLONE_NEWNS) == 0) ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
      body();
    } catch (...) {
      failure = std::current_exception();
    }
  }).join();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace kolum::disc
