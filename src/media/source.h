// A file that is opened once for all readers of its bytes.
#ifndef KOLUM_MEDIA_SOURCE_H
#define KOLUM_MEDIA_SOURCE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/descriptor.h"
#include "media/budget.h"

namespace kolum::media {

// Owns its descriptor. Reads by position, so readers do not disturb each other. One thread at a
// time. A source serves one call: what its readers may use up is counted from its opening on.
class Source {
 public:
  // Regular files and block devices only; empty for everything else. Opening never blocks.
  static std::optional<Source> open(const std::string& path);
  // The same for a descriptor that is already open. NAME is the file's name for readers.
  static std::optional<Source> adopt(Descriptor descriptor, std::string name);
  // The same for anything that is open.
  static Source adoptUnchecked(Descriptor descriptor, std::string name);
  // Anything that can be opened, for readers of a few bytes. Reading fails for anything but a file.
  static std::optional<Source> openUnchecked(const std::string& path);

  Source(Source&&) noexcept = default;
  Source& operator=(Source&&) = delete;

  const std::string& name() const { return name_; }
  int descriptor() const { return descriptor_.get(); }
  // The size in bytes at the first call; 0 for block devices.
  std::int64_t size() const;

  // Reads at POSITION until OUT is full or the file ends, which it also does when the budget is
  // used up. Returns the number of bytes read, or a negative number with the reason in errno.
  std::ptrdiff_t readAt(std::int64_t position, std::span<std::uint8_t> out) const;
  // The first bytes, kHeadSize at most, which are read once for all readers: nearly every one needs
  // some of them.
  std::span<const std::uint8_t> head() const noexcept;
  std::uint64_t bytesRead() const noexcept { return meter_.bytesRead(); }
  // Whether the call has used up its budget. Cheap enough to be asked often.
  bool isUsedUp() const noexcept { return meter_.isUsedUp(); }
  // Lets the bytes from BEGIN to END read as zeros: what they hold would cost its readers too much.
  void blank(std::int64_t begin, std::int64_t end) const;
  // Whether the file system allows such a position, within the file or beyond its end.
  bool canSeekTo(std::int64_t position) const;
  // How far beyond POSITION the file's next data begins: 0 if there is data, or if the file system
  // does not report it; empty if only a hole follows.
  std::optional<std::int64_t> distanceToData(std::int64_t position) const;

  static constexpr std::size_t kHeadSize = 32768;

 private:
  Source(Descriptor descriptor, std::string name) noexcept;
  std::ptrdiff_t readDirectly(std::int64_t position, std::span<std::uint8_t> out) const;
  void applyBlanks(std::int64_t position, std::span<std::uint8_t> bytes) const;

  Descriptor descriptor_;
  std::string name_;
  mutable std::optional<std::int64_t> size_;
  mutable std::vector<std::uint8_t> head_;
  mutable Meter meter_;
  struct Range {
    std::int64_t begin;
    std::int64_t end;
  };
  mutable std::vector<Range> blanks_;
};

}  // namespace kolum::media

#endif
