#include "read/disc/mounting.h"

#include <linux/capability.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>

namespace kolum::disc {

namespace {

// In a container, even root often may not mount.
bool mayMount() {
  constexpr std::string_view kEffective = "CapEff:";
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (!line.starts_with(kEffective)) continue;
    const std::uint64_t capabilities = std::stoull(line.substr(kEffective.size()), nullptr, 16);
    return (capabilities >> CAP_SYS_ADMIN & 1) != 0;
  }
  return true;
}

}  // namespace

std::optional<std::string> fileSystem(const std::string& name, const std::string& module) {
  std::ifstream known("/proc/filesystems");
  for (std::string line; std::getline(known, line);)
    if (line.ends_with("\t" + name)) return "known";
  utsname kernel = {};
  uname(&kernel);
  const auto modules = std::filesystem::path("/lib/modules") / kernel.release / "kernel/fs";
  std::error_code error;
  if (!std::filesystem::exists(modules / module, error)) return std::nullopt;
  return "as a module";
}

std::optional<std::string> mountingObstacle() {
  if (geteuid() != 0) return "mounting needs root";
  if (!mayMount()) return "root may not mount here, as in most containers";
  if (access("/dev/loop-control", F_OK) != 0) return "there are no loop devices";
  if (!fileSystem("iso9660", "isofs") && !fileSystem("udf", "udf"))
    return "this kernel has neither ISO 9660 nor UDF";
  return std::nullopt;
}

}  // namespace kolum::disc
