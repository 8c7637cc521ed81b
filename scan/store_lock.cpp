#include "scan/store_lock.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "scan/errors.h"

namespace kolum::scan {

namespace {

using Kind = StoreError::Kind;

constexpr std::chrono::milliseconds kWait(100);

// Of the open file, not of the process: closing another descriptor of the file does not end it.
bool take(int file) {
  struct flock whole = {};
  whole.l_type = F_WRLCK;
  whole.l_whence = SEEK_SET;
  return fcntl(file, F_OFD_SETLK, &whole) == 0;
}

[[noreturn]] void failOpening(const std::string& library, int error) {
  const bool isReadOnly = error == EROFS || error == EACCES || error == EPERM;
  const bool isFull = error == ENOSPC || error == EDQUOT;
  throw StoreError(isReadOnly ? Kind::kReadOnly
                   : isFull   ? Kind::kDiskFull
                              : Kind::kCannotOpen,
                   library + ".lock: " + std::strerror(error));
}

// What the process that has the lock wrote into the file.
std::string holder(int file) {
  char text[32];
  const ssize_t length = pread(file, text, sizeof text, 0);
  std::string digits;
  for (ssize_t i = 0; i < length && text[i] >= '0' && text[i] <= '9'; ++i) digits += text[i];
  return digits.empty() ? "another process" : "process " + digits;
}

// In a folder where others may write, the name may lead to any file, which must not be emptied.
bool isOwn(int file) {
  struct stat status = {};
  return fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 1;
}

}  // namespace

StoreLock::StoreLock(const std::string& library, const std::function<bool()>& keepWaiting)
    : file_(open((library + ".lock").c_str(),
                 O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0644)) {
  if (!file_.isOpen()) failOpening(library, errno);
  if (!isOwn(file_.get()))
    throw StoreError(Kind::kCannotOpen, library + ".lock: is not a file of its own");
  while (!take(file_.get())) {
    if (errno != EAGAIN && errno != EACCES && errno != EINTR) failOpening(library, errno);
    if (!keepWaiting || !keepWaiting())
      throw StoreError(Kind::kInUse, library + ": in use by " + holder(file_.get()));
    std::this_thread::sleep_for(kWait);
  }
  // For the message of others only, so a full disk does not matter.
  const std::string self = std::to_string(getpid()) + "\n";
  if (ftruncate(file_.get(), 0) == 0 && pwrite(file_.get(), self.data(), self.size(), 0) < 0)
    errno = 0;
}

}  // namespace kolum::scan
