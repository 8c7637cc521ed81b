// How a scan reads a file: as the probe command does.
#ifndef KOLUM_TOOL_COMMANDS_SCAN_PROBER_H
#define KOLUM_TOOL_COMMANDS_SCAN_PROBER_H

#include "scan/prober.h"

namespace kolum::tool {

struct ProberOptions {
  bool byContent = false;  // kinds are decided as by "kolum probe --all"
  bool mountsImages = false;
  bool wantsFingerprint = false;
};

scan::Prober fileProber(const ProberOptions& options);

}  // namespace kolum::tool

#endif
