// What a thread of a lane does with a task.
#ifndef KOLUM_SCAN_READING_H
#define KOLUM_SCAN_READING_H

#include "scan/lanes.h"
#include "scan/open_files.h"
#include "scan/prober.h"

namespace kolum::scan {

// Looks at a file, or finds out that it is a known one under a new name, or checks which files of a
// folder are left. Does not throw.
TaskResult carryOut(Task&& task, const Prober& prober, OpenFiles& openFiles) noexcept;

// Reads the root's folder, for which its device has to answer.
void readRoot(const Job& job);

}  // namespace kolum::scan

#endif
