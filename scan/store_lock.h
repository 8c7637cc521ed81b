// Keeps a library to one writing process.
#ifndef KOLUM_SCAN_STORE_LOCK_H
#define KOLUM_SCAN_STORE_LOCK_H

#include <functional>
#include <string>

#include "base/descriptor.h"

namespace kolum::scan {

// A lock on the file LIBRARY.lock, which stays behind: removing it would let two processes lock
// two files of that name. The kernel takes the lock away when its process ends, however it ends.
class StoreLock {
 public:
  // While another process has the lock, asks KEEPWAITING every 100 ms whether to wait for it;
  // without, or when it returns false, throws kInUse with that process's number.
  explicit StoreLock(const std::string& library, const std::function<bool()>& keepWaiting = {});

 private:
  Descriptor file_;
};

}  // namespace kolum::scan

#endif
