#include "files/library.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "describe/json.h"
#include "describe/media_path.h"
#include "read/ffmpeg/version.h"
#include "terminal/context.h"
#include "terminal/output.h"
#include "terminal/syntax.h"

namespace kolum::tool {

namespace {

// Empty unless the variable holds an absolute path: others have no meaning there.
std::string folderIn(const char* variable) {
  const char* folder = std::getenv(variable);
  return folder != nullptr && *folder == '/' ? describe::withSlash(folder) : "";
}

std::string dataFolder() {
  if (std::string data = folderIn("XDG_DATA_HOME"); !data.empty()) return data;
  if (const std::string home = folderIn("HOME"); !home.empty()) return home + ".local/share/";
  throw UsageError("HOME is not set; --library FILE names the library");
}

}  // namespace

void addLibraryOption(Syntax& syntax, std::string& file) {
  syntax.option("--library", {"FILE", Offer::kFiles}, file,
                "The library; else kolum/library.db in $XDG_DATA_HOME or ~/.local/share");
}

std::string libraryFile(const std::string& given) {
  return given.empty() ? dataFolder() + "kolum/library.db" : given;
}

scan::Version documentVersion() {
  return {describe::kJsonSchema, "kolum " KOLUM_VERSION ", " + ffmpeg::versionInUse()};
}

std::string resolvedPath(const std::string& path) {
  std::error_code error;
  std::filesystem::path resolved = std::filesystem::weakly_canonical(path, error);
  if (error) resolved = std::filesystem::absolute(path, error).lexically_normal();
  std::string text = resolved.string();
  while (text.size() > 1 && text.ends_with('/')) text.pop_back();
  return text;
}

}  // namespace kolum::tool
