// What a scan asks of whoever reads the files, and what it gets back.
#ifndef KOLUM_SCAN_PROBER_H
#define KOLUM_SCAN_PROBER_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "scan/values.h"

namespace kolum::scan {

struct Job {
  FilePath file;
  std::size_t rootLength = 0;  // of the part of the folder that is the root, with its "/"
  Identity identity;           // as the walk saw it, before the file is opened
  bool isAlone = false;        // a suspect: nothing else is read at the same time

  std::string root() const { return file.folder.substr(0, rootLength); }
  // Relative to the root, for opening beneath it (scan/beneath.h).
  std::string pathBeneath() const { return file.folder.substr(rootLength) + file.name; }
};

struct Outcome {
  enum class Kind {
    kDocument,  // it was described
    kFailure,   // an ordinary one: not media, damaged, not readable
    // The file may be poison: it is tried once more, alone.
    kCrash,
    kDeadline,
    kMemory,
  };

  Kind kind = Kind::kFailure;
  std::string document;      // a JSON object; empty unless it was described
  Reason reason;             // why it was not
  bool isTransient = false;  // a failure that may pass by itself: the next scan tries again
  std::uint64_t bytesRead = 0;
};

// Called by many threads at once, one call per file. May throw; that is a failure of the file, but
// std::bad_alloc ends the scan. If it never
// returns, the scan goes on without the thread.
using Prober = std::function<Outcome(const Job&)>;

}  // namespace kolum::scan

#endif
