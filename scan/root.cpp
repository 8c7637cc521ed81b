#include "scan/root.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <filesystem>
#include <utility>

namespace kolum::scan {

namespace {

// The kernel's name of an open folder, without links; empty if it has none.
std::string nameOf(int folder) {
  std::array<char, PATH_MAX> name = {};
  const std::string link = "/proc/self/fd/" + std::to_string(folder);
  const ssize_t length = readlink(link.c_str(), name.data(), name.size());
  if (length <= 0 || static_cast<std::size_t>(length) >= name.size()) return "";
  std::string path(name.data(), static_cast<std::size_t>(length));
  struct stat byName = {};
  struct stat byNumber = {};
  const bool isSame = path.starts_with('/') && stat(path.c_str(), &byName) == 0 &&
                      fstat(folder, &byNumber) == 0 && byName.st_ino == byNumber.st_ino &&
                      byName.st_dev == byNumber.st_dev;
  return isSame ? path : "";
}

}  // namespace

OpenedRoot openRoot(const std::string& path) {
  OpenedRoot root;
  Descriptor descriptor(::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  struct stat status = {};
  if (!descriptor.isOpen() || fstat(descriptor.get(), &status) != 0) {
    root.reason = errno == ENOTDIR ? "not a folder" : std::strerror(errno);
    return root;
  }
  root.path = nameOf(descriptor.get());
  if (root.path.empty()) {
    root.reason = "its path cannot be determined";
    return root;
  }
  if (!root.path.ends_with('/')) root.path += '/';
  root.device = status.st_dev;
  root.descriptor = std::make_shared<const Descriptor>(std::move(descriptor));
  return root;
}

std::string absolutePath(const std::string& path) {
  std::error_code error;
  const auto whole = std::filesystem::absolute(path, error);
  return error ? path : whole.lexically_normal().string();
}

}  // namespace kolum::scan
