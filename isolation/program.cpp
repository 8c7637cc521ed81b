#include "isolation/program.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <filesystem>

namespace kolum::isolation {

namespace {

constexpr const char* kFolders[] = {KOLUM_WORKER_FROM_LIBRARY, KOLUM_WORKER_FROM_TOOL,
                                    "../isolation", "../../isolation"};

// The shared object or program that this code is in.
std::filesystem::path ownFile() {
  Dl_info info = {};
  void* map = nullptr;
  if (dladdr1(kFolders, &info, &map, RTLD_DL_LINKMAP) != 0 && map != nullptr) {
    const char* name = static_cast<const link_map*>(map)->l_name;
    if (name != nullptr && name[0] != '\0') return name;
  }
  return "/proc/self/exe";
}

}  // namespace

std::optional<std::string> workerProgram() {
  std::error_code error;
  const auto own = std::filesystem::canonical(ownFile(), error);
  if (error) return std::nullopt;
  for (const char* folder : kFolders) {
    const auto program = (own.parent_path() / folder / "kolum-worker").lexically_normal();
    if (access(program.c_str(), X_OK) == 0) return program.string();
  }
  return std::nullopt;
}

}  // namespace kolum::isolation
