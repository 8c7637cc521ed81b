#include "machine/protections.h"

#include <cstdint>

#include "isolation/isolation.h"
#include "isolation/message.h"

namespace kolum::tool {

namespace {

struct Row {
  isolation::Layer layer;
  const char* name;
  const char* purpose;
};

constexpr Row kRows[] = {
    {isolation::kFileSystemClosed, "Landlock", "workers see no files"},
    {isolation::kSystemCalls, "seccomp", "workers make few system calls"},
    {isolation::kUnprivileged, "no privileges", "workers are not root"},
    {isolation::kNoNewPrivileges, "no new privileges", "and do not become it"},
    {isolation::kLimits, "limits", "workers have little memory and time"},
    {isolation::kNotDumpable, "not dumpable", "workers cannot be looked into"},
};

constexpr std::uint32_t layersOfRows() {
  std::uint32_t layers = 0;
  for (const Row& row : kRows) layers |= row.layer;
  return layers;
}
static_assert(layersOfRows() == isolation::kAllLayers);

}  // namespace

std::vector<Protection> protections() {
  std::string why;
  const std::uint32_t layers = isolation::activeLayers(why).value_or(0);
  std::vector<Protection> found;
  for (const Row& row : kRows) {
    const bool isActive = (layers & row.layer) != 0;
    found.push_back({row.name, row.purpose, isActive ? std::optional("active") : std::nullopt});
  }
  return found;
}

std::string protectionsText() {
  if (isolation::settings().mode == isolation::Mode::kOff) return "";
  std::string missing;
  for (const Protection& each : protections())
    if (!each.state) missing += (missing.empty() ? "all but " : ", ") + std::string(each.name);
  return missing.empty() ? "all" : missing;
}

}  // namespace kolum::tool
