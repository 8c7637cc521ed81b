// Reading files byte by byte, for the parsers that do without FFmpeg.
#ifndef KOLUM_SUPPORT_FILE_H
#define KOLUM_SUPPORT_FILE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace kolum {

// A file opened for reading; closed on destruction.
class File {
 public:
  // Empty on failure, with the reason in errno. Never waits: a pipe opens at once and reads as
  // empty.
  static std::optional<File> open(const char* path);

  File(File&& other) noexcept;
  File& operator=(File&&) = delete;
  ~File();

  // Reads at OFFSET until OUT is full or the file ends; the number of bytes read, or a negative
  // number with the reason in errno.
  std::ptrdiff_t readAt(std::int64_t offset, std::span<std::uint8_t> out) const;

  // Whether the file system has such a position, within the file or beyond its end.
  bool canSeekTo(std::int64_t offset) const;

  // The size in bytes, or a negative number.
  std::int64_t size() const;

 private:
  explicit File(int descriptor) : descriptor_(descriptor) {}
  int descriptor_;
};

}  // namespace kolum

#endif
