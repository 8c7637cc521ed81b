// The protections of the workers that read files.
#ifndef KOLUM_TOOL_MACHINE_PROTECTIONS_H
#define KOLUM_TOOL_MACHINE_PROTECTIONS_H

#include <optional>
#include <string>
#include <vector>

namespace kolum::tool {

struct Protection {
  const char* name;
  const char* purpose;
  std::optional<std::string> state;  // empty if it is not active
};

// Starts a worker to find out. None is active if there is no worker.
std::vector<Protection> protections();

// "all", or "all but" with the names of those that are not active; empty if files are read in this
// process.
std::string protectionsText();

}  // namespace kolum::tool

#endif
