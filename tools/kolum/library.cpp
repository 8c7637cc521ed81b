#include <kolum/frame.h>

#include <filesystem>

#include "context.h"

namespace kolum::tool {

bool Context::initLibrary() {
  const std::string tools = standInFolder();
  if (KoLUM_Init(tools.empty() ? nullptr : tools.c_str()) == 0) return true;
  fail("the notification channels cannot be opened");
  return false;
}

std::string standInFolder() {
  std::error_code error;
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return "";
  const std::filesystem::path folder = self.parent_path().parent_path() / "appliance" / "bin";
  return std::filesystem::is_directory(folder, error) ? folder.string() + "/" : "";
}

}  // namespace kolum::tool
