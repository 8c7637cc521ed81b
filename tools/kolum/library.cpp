#include <kolum/frame.h>

#include <filesystem>

#include "context.h"

namespace kolum::tool {

bool Context::initLibrary() {
  if (!hasChannels_) {
    const std::string tools = standInFolder();
    hasChannels_ = KoLUM_Init(tools.empty() ? nullptr : tools.c_str()) == 0;
  }
  return *hasChannels_;
}

std::string standInFolder() {
  std::error_code error;
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return "";
  for (const char* place : {KOLUM_TOOL_FOLDER_BUILT, KOLUM_TOOL_FOLDER_INSTALLED}) {
    const std::filesystem::path folder = self.parent_path() / place;
    if (std::filesystem::is_directory(folder, error))
      return folder.lexically_normal().string() + "/";
  }
  return "";
}

std::string standIn(const std::string& tool) {
  const std::string folder = standInFolder();
  return folder.empty() ? "" : folder + tool;
}

}  // namespace kolum::tool
