#include "scan/storage.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

namespace kolum::scan {

namespace {

namespace fs = std::filesystem;

// File systems whose files are on another machine, or come from a program. "fuseblk" is none: it is
// a disk's.
constexpr std::array<std::string_view, 19> kNetworkTypes = {
    "nfs",  "nfs4", "cifs",      "smb3",     "smbfs", "9p",    "fuse",   "afs",   "ceph", "coda",
    "gfs2", "gpfs", "glusterfs", "orangefs", "ocfs2", "pvfs2", "lustre", "davfs", "ncpfs"};

// A second file is asked for while the first is on its way; more only make the heads move, and
// keep a server from its other clients.
constexpr std::size_t kJobsOfSlowMedia = 2;

bool isNetwork(std::string_view type) {
  return type.starts_with("fuse.") ||
         std::find(kNetworkTypes.begin(), kNetworkTypes.end(), type) != kNetworkTypes.end();
}

// The table writes blanks, tabs, newlines and backslashes as "\040".
std::string unescaped(std::string_view text) {
  const auto digit = [&](std::size_t at) { return text[at] >= '0' && text[at] <= '7'; };
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isEscape =
        text[i] == '\\' && i + 3 < text.size() && digit(i + 1) && digit(i + 2) && digit(i + 3);
    if (!isEscape) {
      plain += text[i];
      continue;
    }
    plain +=
        static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 + text[i + 3] - '0');
    i += 3;
  }
  return plain;
}

std::string firstLineOf(const fs::path& file) {
  std::ifstream in(file);
  std::string line;
  std::getline(in, line);
  return line;
}

std::string numberOf(const std::string& deviceFile) {
  struct stat status = {};
  if (stat(deviceFile.c_str(), &status) != 0 || !S_ISBLK(status.st_mode)) return "";
  return std::to_string(major(status.st_rdev)) + ":" + std::to_string(minor(status.st_rdev));
}

std::string withSlash(std::string folder) {
  if (!folder.ends_with('/')) folder += '/';
  return folder;
}

// The folder of the whole disk that a block device is on, of which logical volumes may have several
// layers; empty if there are several such disks, or none.
fs::path diskFolder(const fs::path& device) {
  constexpr int kLayers = 8;
  std::error_code error;
  fs::path folder = fs::canonical(device, error);
  for (int i = 0; i < kLayers && !error; ++i) {
    if (fs::exists(folder / "partition", error)) {
      folder = folder.parent_path();
      continue;
    }
    fs::directory_iterator below(folder / "slaves", error);
    if (error || below == fs::directory_iterator()) return folder;
    const fs::path only = below->path();
    if (below.increment(error) != fs::directory_iterator()) return folder;
    folder = fs::canonical(only, error);
  }
  return {};
}

}  // namespace

std::string_view nameOf(Medium medium) {
  switch (medium) {
    case Medium::kRotating:
      return "rotating";
    case Medium::kNetwork:
      return "network";
    case Medium::kFast:
      break;
  }
  return "fast";
}

std::size_t jobsFor(Medium medium, std::size_t processors) {
  const std::size_t most = std::max<std::size_t>(processors, 1);
  return medium == Medium::kFast ? most : std::min(most, kJobsOfSlowMedia);
}

Storage::Storage(const std::string& mountTable, std::string sysfs) : sysfs_(std::move(sysfs)) {
  std::ifstream table(mountTable);
  for (std::string line; std::getline(table, line);) {
    mounts_.push_back(parsed(line));
    mounts_.back().device = describe(mounts_.back());
  }
}

// "36 35 98:0 /mnt1 /mnt2 rw,noatime master:1 - ext3 /dev/root rw": between the sixth word and the
// dash there may be any number of others.
Storage::Mount Storage::parsed(const std::string& line) {
  Mount mount;
  std::istringstream words(line);
  std::string word;
  std::string place;
  words >> word >> word >> mount.number >> word >> place;
  while (words >> word && word != "-") continue;
  words >> mount.type >> mount.source;
  mount.place = withSlash(unescaped(place));
  mount.source = unescaped(mount.source);
  return mount;
}

Device Storage::deviceOf(std::string_view path) const {
  const std::string folder = withSlash(std::string(path));
  const Mount* nearest = nullptr;
  // The last of those at one place is on top.
  for (const Mount& mount : mounts_) {
    const bool isAbove = folder.starts_with(mount.place);
    if (isAbove && (nearest == nullptr || mount.place.size() >= nearest->place.size()))
      nearest = &mount;
  }
  return nearest == nullptr ? Device{"unknown", "/", Medium::kFast} : nearest->device;
}

std::vector<std::string> Storage::mountsBelow(std::string_view path) const {
  const std::string folder = withSlash(std::string(path));
  std::vector<std::string> places;
  for (const Mount& mount : mounts_)
    if (mount.place.size() > folder.size() && mount.place.starts_with(folder))
      places.push_back(mount.place);
  return places;
}

Device Storage::describe(const Mount& mount) const {
  const std::string place =
      mount.place == "/" ? mount.place : mount.place.substr(0, mount.place.size() - 1);
  if (isNetwork(mount.type)) {
    // A server's mounts share its way; without a source each stands for itself.
    return {mount.type + " " + (mount.source.empty() ? mount.number : mount.source), place,
            Medium::kNetwork};
  }
  const std::string disk = diskOf(mount);
  if (disk.empty()) return {mount.number, place, Medium::kFast};
  const bool isRotating = firstLineOf(fs::path(disk) / "queue/rotational") == "1";
  return {fs::path(disk).filename(), place, isRotating ? Medium::kRotating : Medium::kFast};
}

// The folder in sysfs of the disk below a mount; empty if there is none.
std::string Storage::diskOf(const Mount& mount) const {
  const auto folderOf = [&](const std::string& number) {
    return diskFolder(fs::path(sysfs_) / "dev/block" / number);
  };
  // Btrfs has numbers of its own for what it mounts; the device file says what is below.
  const bool isNumbered = !mount.number.empty() && !mount.number.starts_with("0:");
  if (isNumbered) return folderOf(mount.number);
  if (!mount.source.starts_with("/dev/")) return "";
  const std::string number = numberOf(mount.source);
  return number.empty() ? "" : folderOf(number).string();
}

}  // namespace kolum::scan
