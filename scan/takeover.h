// What the marks of a scan that was killed mean for the files.
#ifndef KOLUM_SCAN_TAKEOVER_H
#define KOLUM_SCAN_TAKEOVER_H

#include <vector>

#include "scan/store.h"

namespace kolum::scan {

// Marked files that were not open are as before. Those that were open become suspects. One that was
// open alone stays a suspect once: a kill from outside hits innocent files, too, and most easily
// the one that is read at that time. The second time, it goes into quarantine.
//
// Call before OpenFiles is made anew. Returns the marks of suspects and of what is in quarantine
// now (isAlone).
std::vector<Mark> takeOver(Store& store);

}  // namespace kolum::scan

#endif
