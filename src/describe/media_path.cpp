#include "describe/media_path.h"

namespace kolum::describe {

MediaPath splitPath(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  std::string given(path);
  if (slash == std::string_view::npos) return {given, "./", given};
  return {given, given.substr(0, slash + 1), given.substr(slash + 1)};
}

std::string withSlash(std::string folder) {
  if (!folder.ends_with('/')) folder += '/';
  return folder;
}

}  // namespace kolum::describe
