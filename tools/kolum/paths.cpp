#include "paths.h"

namespace kolum::tool {

MediaPath splitPath(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos) return {"./", std::string(path)};
  return {std::string(path.substr(0, slash + 1)), std::string(path.substr(slash + 1))};
}

}  // namespace kolum::tool
