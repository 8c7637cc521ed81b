// How a scan reads a file: as the probe command does.
#ifndef KOLUM_TOOL_COMMANDS_SCAN_PROBER_H
#define KOLUM_TOOL_COMMANDS_SCAN_PROBER_H

#include <memory>

#include "geocode/place_finder.h"
#include "scan/prober.h"

namespace kolum::tool {

struct ProberOptions {
  bool byContent = false;  // kinds are decided as by "kolum probe --all"
  bool mountsImages = false;
  bool wantsFingerprint = false;
  // Null unless places are wanted. Threads that are left behind may still use it.
  std::shared_ptr<geocode::PlaceFinder> places = {};
};

scan::Prober fileProber(const ProberOptions& options);

}  // namespace kolum::tool

#endif
