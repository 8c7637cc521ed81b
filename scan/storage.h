// What folders are on: how many of their files may be read at a time, and in which order.
//
// Everything is read from the kernel's table of mounts and from sysfs; the file systems themselves
// are never asked, because one on a server that does not answer would not do so either.
#ifndef KOLUM_SCAN_STORAGE_H
#define KOLUM_SCAN_STORAGE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kolum::scan {

enum class Medium {
  kRotating,  // each change of place costs milliseconds
  kNetwork,   // NFS, SMB, 9p, FUSE and the like: slow, shared, and it may stop answering
  kFast,      // solid state, memory, and what is not known
};

struct Device {
  std::string id;     // of the disk, for all of its partitions; or of the mount
  std::string mount;  // where it is mounted, for people
  Medium medium = Medium::kFast;
};

// "rotating", "network", "fast".
std::string_view nameOf(Medium medium);

// How many files may be read at a time from one such device, on a machine with so many processors.
std::size_t jobsFor(Medium medium, std::size_t processors);

class Storage {
 public:
  // The mounts of this moment. Other tables are for tests.
  explicit Storage(const std::string& mountTable = "/proc/self/mountinfo",
                   std::string sysfs = "/sys");

  // Of an absolute path without links, which need not exist.
  Device deviceOf(std::string_view path) const;
  // The places in a folder that others are mounted on.
  std::vector<std::string> mountsBelow(std::string_view folder) const;

 private:
  struct Mount {
    std::string place;   // ends with "/"
    std::string number;  // "8:1"
    std::string type;
    std::string source;
    Device device = {};
  };

  static Mount parsed(const std::string& line);
  Device describe(const Mount& mount) const;
  std::string diskOf(const Mount& mount) const;

  std::vector<Mount> mounts_;
  std::string sysfs_;
};

}  // namespace kolum::scan

#endif
