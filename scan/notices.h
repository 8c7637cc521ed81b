// What the kernel reports about folders, for scan/watch.h.
#ifndef KOLUM_SCAN_NOTICES_H
#define KOLUM_SCAN_NOTICES_H

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "scan/storage.h"
#include "scan/walk.h"

namespace kolum::scan {

// Something about an entry of a folder has changed.
struct Notice {
  std::string folder;  // absolute, with a trailing "/"
  std::string name;
  bool isFolder = false;  // the entry
  bool hasAppeared = false;
};

class Notices {
 public:
  virtual ~Notices() = default;
  Notices() = default;
  Notices(const Notices&) = delete;
  Notices& operator=(const Notices&) = delete;

  // Becomes readable when there is something.
  virtual int descriptor() const = 0;
  // Everything that there is. False if some of it was lost.
  virtual bool read(const std::function<void(const Notice&)>& visit) = 0;
  // To be called for new folders, before they are walked: their sub-folders are watched from then
  // on, too. False if PULSE says that it is to stop.
  virtual bool addTree(const std::string& folder, Pulse& pulse) = 0;
  // Why folders are not watched; empty if all are.
  virtual std::string obstacle() const = 0;
};

// For whole file systems. Null if that is not allowed, or not possible for one of the roots.
std::unique_ptr<Notices> fanotifyNotices(const std::vector<std::string>& roots,
                                         const Storage& storage);
// For single folders, which addTree() adds. Null if there can be none.
std::unique_ptr<Notices> inotifyNotices(const Selection& selection,
                                        const std::vector<std::string>& roots);

}  // namespace kolum::scan

#endif
