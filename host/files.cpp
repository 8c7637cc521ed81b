#include <kolum/host.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace fs = std::filesystem;

namespace {

void dropClosingSlashes(std::string& path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
}

}  // namespace

int KoUtil_IsFileExist(const char* path) {
  struct stat status = {};
  return path != nullptr && stat(path, &status) == 0 ? 1 : 0;
}

int isFolderExist(const char* path) {
  struct stat status = {};
  return path != nullptr && stat(path, &status) == 0 && S_ISDIR(status.st_mode) ? 1 : 0;
}

int komkdir(const char* path) try {
  if (path == nullptr || *path == '\0') return -1;
  std::error_code error;
  fs::create_directories(path, error);
  return isFolderExist(path) != 0 ? 0 : -1;
} catch (...) {
  return -1;
}

int koremove2(const char* path) try {
  if (path == nullptr || *path == '\0') return -1;
  // With a trailing "/" the system would follow a link before it could be recognised as one.
  std::string tree = path;
  dropClosingSlashes(tree);
  if (tree == "/") return -1;
  std::error_code error;
  const std::uintmax_t removed = fs::remove_all(tree, error);
  return !error && removed > 0 ? 0 : -1;
} catch (...) {
  return -1;
}

void KoUtil_GetDataDir(std::string& dir) try {
  const char* configured = std::getenv("KO_DATA_DIR");
  dir = configured != nullptr ? configured : "";
  dropClosingSlashes(dir);
} catch (...) {
  dir.clear();
}
