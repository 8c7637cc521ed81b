#include "support/misbehaving_folder.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <stdexcept>
#include <thread>

namespace kolum::test {

namespace {

using namespace std::chrono_literals;

constexpr auto kTimeToMount = 10s;

dev_t deviceOf(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 ? status.st_dev : 0;
}

}  // namespace

std::optional<std::string> MisbehavingFolder::unavailable() {
  const int device = open("/dev/fuse", O_RDWR | O_CLOEXEC);
  if (device < 0) return std::string("/dev/fuse: ") + std::strerror(errno);
  close(device);
  return std::nullopt;
}

MisbehavingFolder::MisbehavingFolder(const std::string& folder, const std::string& name,
                                     const std::string& mischief, const std::string& content,
                                     const std::string& good)
    : folder_(folder) {
  const dev_t before = deviceOf(folder);
  server_ = fork();
  if (server_ == 0) {
    execl(KOLUM_MISBEHAVING_FILES, "misbehaving_files", folder.c_str(), name.c_str(),
          mischief.c_str(), content.c_str(), good.c_str(), nullptr);
    _exit(127);
  }
  for (const auto end = std::chrono::steady_clock::now() + kTimeToMount;
       deviceOf(folder) == before;) {
    const bool hasEnded = waitpid(server_, nullptr, WNOHANG) != 0;
    if (!hasEnded && std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(5ms);
      continue;
    }
    if (!hasEnded) {
      kill(server_, SIGKILL);
      waitpid(server_, nullptr, 0);
    }
    throw std::runtime_error("no file system on " + folder);
  }
}

MisbehavingFolder::~MisbehavingFolder() {
  kill(server_, SIGKILL);
  waitpid(server_, nullptr, 0);
  umount2(folder_.c_str(), MNT_DETACH);
}

}  // namespace kolum::test
