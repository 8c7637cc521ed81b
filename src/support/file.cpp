#include "support/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace kolum {

std::optional<File> File::open(const char* path) {
  const int descriptor = ::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return std::nullopt;
  return File(descriptor);
}

File::File(File&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

File::~File() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

std::ptrdiff_t File::readAt(std::int64_t offset, std::span<std::uint8_t> out) const {
  std::size_t done = 0;
  while (done < out.size()) {
    const ssize_t got = ::pread(descriptor_, out.data() + done, out.size() - done,
                                offset + static_cast<std::int64_t>(done));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return -1;
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  return static_cast<std::ptrdiff_t>(done);
}

bool File::canSeekTo(std::int64_t offset) const {
  return ::lseek(descriptor_, offset, SEEK_SET) >= 0;
}

std::int64_t File::size() const {
  struct stat status = {};
  return fstat(descriptor_, &status) == 0 ? status.st_size : -1;
}

}  // namespace kolum
