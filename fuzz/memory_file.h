// A file with the fuzzer's bytes, for code that takes a path.
#ifndef KOLUM_FUZZ_MEMORY_FILE_H
#define KOLUM_FUZZ_MEMORY_FILE_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace kolum::fuzz {

class MemoryFile {
 public:
  MemoryFile(const std::uint8_t* data, std::size_t size)
      : descriptor_(memfd_create("fuzz", MFD_CLOEXEC)) {
    if (descriptor_ < 0 || write(descriptor_, data, size) != static_cast<ssize_t>(size))
      std::abort();
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string folder() const { return "/proc/self/fd/"; }
  std::string name() const { return std::to_string(descriptor_); }
  std::string path() const { return folder() + name(); }

 private:
  int descriptor_;
};

}  // namespace kolum::fuzz

#endif
