#include "read/disc/disc.h"

#include <dirent.h>
#include <fcntl.h>
#include <kolum/host.h>
#include <kolum/identifiers.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <utility>

#include "base/descriptor.h"
#include "base/log.h"
#include "base/text.h"

namespace kolum::disc {

namespace {

constexpr std::string_view kStreamSuffix = ".m2ts";

struct DirectoryCloser {
  void operator()(DIR* directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, DirectoryCloser>;

bool hasSuffix(std::string_view name, std::string_view extension) {
  const std::string_view suffix = extensionOf(name);
  // A longer suffix that begins with the extension also counts; hosts rely on it.
  return !suffix.empty() && equalsIgnoringCase(suffix.substr(0, extension.size()), extension);
}

std::optional<std::int64_t> regularFileSize(const std::string& path, Trace& trace) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) {
    // Hosts' log filters match this line by its number.
    trace.error("[" + std::string(kMediaSource) + ":1594] stat: " + std::strerror(errno) + "\n");
    return std::nullopt;
  }
  if (!S_ISREG(status.st_mode)) return std::nullopt;
  return status.st_size;
}

// The host expects FIRST in the buffer for the path.
std::optional<Title> dvdTitle(const std::string& folder, std::string_view first,
                              std::uint32_t containerFormat) {
  char path[kPathSize] = {};
  copyText(path, sizeof path, first);
  Title title;
  if (DVDGetMainVTSNo(folder.c_str(), path, sizeof path, 0, &title.size, 0) != 0)
    return std::nullopt;
  title.root = folder;
  title.path = path;
  title.containerFormat = containerFormat;
  return title;
}

std::optional<Title> blurayTitle(const std::string& root, const std::string& streamFolder,
                                 std::uint32_t containerFormat, Trace& trace) {
  auto path = largestFile(streamFolder, kStreamSuffix, trace);
  if (!path) return std::nullopt;
  return Title{.root = root, .path = std::move(*path), .containerFormat = containerFormat};
}

constexpr int kOpenFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

// For kernels that cannot open files beneath a folder: checks where the path leads at this moment.
Descriptor openCheckedPath(const std::string& root, const std::string& inside) {
  std::error_code error;
  const auto top = std::filesystem::canonical(root, error);
  if (error) return {};
  const auto file = std::filesystem::canonical(root + inside, error);
  if (error || *file.lexically_relative(top).begin() == "..") return {};
  return Descriptor(::open(file.c_str(), kOpenFlags | O_NOFOLLOW));
}

Descriptor openBeneath(const std::string& root, const std::string& inside) {
  const Descriptor folder(::open(root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!folder.isOpen()) return {};
  open_how how = {};
  how.flags = kOpenFlags;
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
  Descriptor opened(
      static_cast<int>(syscall(SYS_openat2, folder.get(), inside.c_str(), &how, sizeof how)));
  const bool isUnknown = !opened.isOpen() && (errno == ENOSYS || errno == EPERM);
  return isUnknown ? openCheckedPath(root, inside) : std::move(opened);
}

}  // namespace

Kind kindOf(std::string_view fileName) {
  if (fileName == "VIDEO_TS.IFO") return Kind::kDvdFolder;
  if (fileName == "index.bdmv") return Kind::kBlurayFolder;
  if (endsWithIgnoringCase(fileName, ".iso")) return Kind::kImage;
  return Kind::kNone;
}

std::optional<Title> dvdFolderTitle(const std::string& folder) {
  return dvdTitle(folder, folder, FORMAT_DVDIFO);
}

std::optional<Title> blurayFolderTitle(const std::string& folder, Trace& trace) {
  return blurayTitle(folder, joinPath(folder, "STREAM/"), FORMAT_BDBDMV, trace);
}

std::optional<Title> imageTitle(const std::string& mountFolder, Trace& trace) {
  if (auto title = dvdTitle(mountFolder, "", FORMAT_DVDISO)) return title;
  return blurayTitle(mountFolder, joinPath(mountFolder, "BDMV/STREAM/"), FORMAT_BDISO, trace);
}

std::vector<std::string> namesIn(const std::string& folder) {
  constexpr std::size_t kMost = 10'000;
  std::vector<std::string> names;
  const Directory directory(opendir(folder.c_str()));
  if (directory == nullptr) return names;
  while (const dirent* entry = readdir(directory.get())) {
    if (names.size() == kMost) break;
    names.emplace_back(entry->d_name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::optional<media::Source> open(const Title& title) {
  const std::string root = title.root.empty() ? "./" : title.root;
  // The host names files of the current folder with or without "./".
  const std::string path =
      title.root.empty() && !title.path.starts_with("./") ? "./" + title.path : title.path;
  if (!path.starts_with(root)) return std::nullopt;
  Descriptor descriptor = openBeneath(root, path.substr(root.size()));
  if (!descriptor.isOpen()) return std::nullopt;
  return media::Source::adopt(std::move(descriptor), title.path);
}

std::optional<std::string> largestFile(const std::string& folder, std::string_view extension,
                                       Trace& trace) {
  const Directory directory(opendir(folder.c_str()));
  if (directory == nullptr) return std::nullopt;
  std::optional<std::string> largest;
  std::int64_t largestSize = 0;
  while (const dirent* entry = readdir(directory.get())) {
    if (!hasSuffix(entry->d_name, extension)) continue;
    std::string path = folder + entry->d_name;
    // Callers' path buffers could not hold the whole path.
    if (path.size() >= kPathSize) continue;
    const auto size = regularFileSize(path, trace);
    if (!size || *size < largestSize) continue;
    largestSize = *size;
    largest = std::move(path);
  }
  return largest;
}

}  // namespace kolum::disc
