#include "base/own_folder.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <filesystem>

namespace kolum {

namespace {

// Anything in the shared object or program that this code is in.
constexpr char kHere = 0;

std::filesystem::path ownFile() {
  Dl_info info = {};
  void* map = nullptr;
  if (dladdr1(&kHere, &info, &map, RTLD_DL_LINKMAP) != 0 && map != nullptr) {
    const char* name = static_cast<const link_map*>(map)->l_name;
    if (name != nullptr && name[0] != '\0') return name;
  }
  return "/proc/self/exe";
}

}  // namespace

std::optional<std::string> programNear(std::span<const char* const> folders,
                                       const std::string& name) {
  std::error_code error;
  const auto own = std::filesystem::canonical(ownFile(), error);
  if (error) return std::nullopt;
  for (const char* folder : folders) {
    const auto program = (own.parent_path() / folder / name).lexically_normal();
    if (access(program.c_str(), X_OK) == 0) return program.string();
  }
  return std::nullopt;
}

}  // namespace kolum
