#include "context.h"

#include <filesystem>

#include "text.h"

namespace kolum::tool {

void Context::fail(std::string_view name, std::string_view reason) {
  failed_ = true;
  std::string line = "kolum: ";
  if (!name.empty()) line += printable(name) + ": ";
  channels.writeMessage(line + printable(reason) + "\n");
}

bool Context::initLibrary() {
  return true;
}

std::string standInFolder() {
  std::error_code error;
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return "";
  const std::filesystem::path folder = self.parent_path().parent_path() / "appliance";
  return std::filesystem::is_directory(folder, error) ? folder.string() + "/" : "";
}

}  // namespace kolum::tool
