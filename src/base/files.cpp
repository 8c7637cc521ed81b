#include "base/files.h"

#include <sys/stat.h>

namespace kolum {

bool exists(const char* path) {
  struct stat status = {};
  return stat(path, &status) == 0;
}

}  // namespace kolum
