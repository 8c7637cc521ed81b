#include "machine/programs.h"
#include "base/appliance.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace kolum::tool {

namespace {

// A tool in the stand-ins' folder; empty if there is no such folder.
std::string standIn(const std::string& tool) {
  const std::string folder = standInFolder();
  return folder.empty() ? "" : folder + tool;
}

}  // namespace

bool isProgram(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         access(path.c_str(), X_OK) == 0;
}

std::string firstProgram(const std::vector<std::string>& paths) {
  for (const std::string& path : paths)
    if (isProgram(path)) return path;
  return "";
}

std::string programOnPath(const std::string& name) {
  const char* path = std::getenv("PATH");
  std::istringstream folders(path != nullptr ? path : "");
  for (std::string folder; std::getline(folders, folder, ':');) {
    std::string program = (std::filesystem::path(folder) / name).string();
    if (folder.starts_with('/') && isProgram(program)) return program;
  }
  return "";
}

std::string setTool() {
  return firstProgram({kSetTool, standIn("setcfg")});
}

std::string convertTool() {
  return firstProgram({kConvertTool, programOnPath("convert")});
}

std::string osmInfoTool() {
  return firstProgram({kOsmInfoTool, standIn("osm_info")});
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

}  // namespace kolum::tool
