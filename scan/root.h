// The folders that scans are given.
#ifndef KOLUM_SCAN_ROOT_H
#define KOLUM_SCAN_ROOT_H

#include <cstdint>
#include <memory>
#include <string>

#include "base/descriptor.h"

namespace kolum::scan {

struct OpenedRoot {
  std::shared_ptr<const Descriptor> descriptor;  // null if it was not opened
  std::string path;                              // absolute, without links, with a trailing "/"
  std::uint64_t device = 0;
  std::string reason;  // why it was not opened
};

// May hang, if a server does not answer.
OpenedRoot openRoot(const std::string& path);

// Without asking any file system, so that links stay.
std::string absolutePath(const std::string& path);

}  // namespace kolum::scan

#endif
