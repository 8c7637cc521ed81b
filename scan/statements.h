// What the statements of the store have in common.
#ifndef KOLUM_SCAN_STATEMENTS_H
#define KOLUM_SCAN_STATEMENTS_H

#include <string>

#include "scan/database.h"
#include "scan/values.h"

namespace kolum::scan {

// The columns "device, inode, size, mtime_ns, ctime_ns", in this order.
inline void bindIdentity(Run& run, const Identity& identity) {
  run.bind(identity.device);
  run.bind(identity.inode);
  run.bind(identity.size);
  run.bind(identity.mtimeNs);
  run.bind(identity.ctimeNs);
}

inline Identity identityAt(const Run& run, int column) {
  return {run.bits(column), run.bits(column + 1), run.number(column + 2), run.number(column + 3),
          run.number(column + 4)};
}

inline void bindPath(Run& run, const FilePath& path) {
  run.bind(Bytes{path.folder});
  run.bind(Bytes{path.name});
}

// The paths of a folder and of all folders below it are those from FOLDER to this one, without it:
// "/share/" to "/share0", as "0" follows "/". Text and blobs are compared apart: what is below a
// folder with a UTF-8 name may be either.
inline std::string endOfTree(std::string folder) {
  folder.back() = '/' + 1;
  return folder;
}

}  // namespace kolum::scan

#endif
