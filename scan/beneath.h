// Opens what lies beneath a folder, and nothing else: no symbolic link is followed, at no place of
// the path, and nothing leads out of the folder. Paths may be longer than PATH_MAX.
#ifndef KOLUM_SCAN_BENEATH_H
#define KOLUM_SCAN_BENEATH_H

#include <sys/stat.h>

#include <optional>
#include <string_view>

#include "base/descriptor.h"

namespace kolum::scan {

// Mount points are crossed. All functions set errno when they fail.
class Beneath {
 public:
  // How a path is resolved: by the kernel at once (openat2), or component by component for kernels
  // and sandboxes without that call, which kAny finds out.
  enum class Way { kAny, kSteps };

  // ROOT stays the caller's and must outlive this.
  explicit Beneath(int root, Way way = Way::kAny) : root_(root), way_(way) {}

  // PATHs are relative, may end with "/", and name the root itself if they are empty.
  //
  // For reading its entries.
  Descriptor openFolder(std::string_view path) const;
  // For reading its bytes. Never waits for a writer, and fails unless it is a regular file (EISDIR
  // for folders, otherwise ENXIO).
  Descriptor openFile(std::string_view path) const;
  // Of the entry itself, even if it is a link.
  std::optional<struct stat> status(std::string_view path) const;

 private:
  Descriptor open(std::string_view path, int flags) const;

  int root_;
  Way way_;
};

}  // namespace kolum::scan

#endif
