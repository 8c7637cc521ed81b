// How a scan reads a file: as the probe command does.
#ifndef KOLUM_TOOL_COMMANDS_SCAN_PROBER_H
#define KOLUM_TOOL_COMMANDS_SCAN_PROBER_H

#include "scan/prober.h"

namespace kolum::tool {

// BYCONTENT: kinds are decided as by "kolum probe --all".
scan::Prober fileProber(bool byContent);

}  // namespace kolum::tool

#endif
