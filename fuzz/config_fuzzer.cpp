// Reads the bytes as both configuration files.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "config/config.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const int fd = memfd_create("configuration", MFD_CLOEXEC);
  static const std::string path = "/proc/self/fd/" + std::to_string(fd);
  if (fd < 0 || ftruncate(fd, 0) != 0) std::abort();
  if (pwrite(fd, data, size, 0) != static_cast<ssize_t>(size)) std::abort();
  lumCfg_s cfg{};
  kolum::config::readConfigFiles(path, path, cfg);
  return 0;
}
