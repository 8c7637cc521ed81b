#include "scan/beneath.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

namespace kolum::scan {

namespace {

// Of a path that the kernel resolves at once; PATH_MAX includes the closing NUL.
constexpr std::size_t kLongestPiece = 4095;
// The kernel asks for another try if something was renamed meanwhile.
constexpr int kTries = 8;

constexpr int kFolderOnTheWay = O_PATH | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW;

Descriptor openAt(int folder, const std::string& path, int flags) {
  return Descriptor(::openat(folder, path.c_str(), flags | O_NOFOLLOW | O_CLOEXEC));
}

Descriptor openByKernel(int folder, const std::string& path, int flags) {
  open_how how = {};
  how.flags = static_cast<unsigned>(flags | O_NOFOLLOW | O_CLOEXEC);
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
  for (int i = 0; i < kTries; ++i) {
    const long opened = syscall(SYS_openat2, folder, path.c_str(), &how, sizeof how);
    if (opened >= 0 || errno != EAGAIN) return Descriptor(static_cast<int>(opened));
  }
  return {};
}

bool isUpwards(std::string_view name) {
  return name == "..";
}

// One component after the other; no component is a link or "..".
Descriptor openBySteps(int folder, std::string_view path, int flags) {
  Descriptor at;
  for (;;) {
    const std::size_t slash = path.find('/');
    const std::string name(path.substr(0, slash));
    if (isUpwards(name)) {
      errno = EXDEV;
      return {};
    }
    const bool isLast = slash == std::string_view::npos;
    Descriptor next =
        openAt(at.isOpen() ? at.get() : folder, name, isLast ? flags : kFolderOnTheWay);
    if (isLast || !next.isOpen()) return next;
    at = std::move(next);
    path.remove_prefix(slash + 1);
  }
}

}  // namespace

Descriptor Beneath::open(std::string_view path, int flags) const {
  while (path.ends_with('/')) path.remove_suffix(1);
  Descriptor at;
  const auto here = [&] { return at.isOpen() ? at.get() : root_; };
  const auto opened = [&](std::string_view piece, int wanted) {
    if (way_ == Way::kSteps) return openBySteps(here(), piece, wanted);
    Descriptor result = openByKernel(here(), std::string(piece), wanted);
    const bool isUnknownCall = !result.isOpen() && (errno == ENOSYS || errno == EPERM);
    return isUnknownCall ? openBySteps(here(), piece, wanted) : std::move(result);
  };
  while (path.size() > kLongestPiece) {
    const std::size_t slash = path.rfind('/', kLongestPiece);
    if (slash == std::string_view::npos || slash == 0) {
      errno = ENAMETOOLONG;
      return {};
    }
    at = opened(path.substr(0, slash), kFolderOnTheWay);
    if (!at.isOpen()) return {};
    path.remove_prefix(slash + 1);
  }
  return opened(path.empty() ? "." : path, flags);
}

Descriptor Beneath::openFolder(std::string_view path) const {
  return open(path, O_RDONLY | O_DIRECTORY);
}

Descriptor Beneath::openFile(std::string_view path) const {
  Descriptor file = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
  struct stat found = {};
  if (!file.isOpen() || fstat(file.get(), &found) != 0) return {};
  if (S_ISREG(found.st_mode)) return file;
  file.reset();
  errno = S_ISDIR(found.st_mode) ? EISDIR : ENXIO;
  return {};
}

std::optional<struct stat> Beneath::status(std::string_view path) const {
  const Descriptor entry = open(path, O_PATH);
  struct stat found = {};
  if (!entry.isOpen() || fstat(entry.get(), &found) != 0) return std::nullopt;
  return found;
}

}  // namespace kolum::scan
