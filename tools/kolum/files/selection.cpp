#include "files/selection.h"

#include <memory>
#include <string_view>
#include <utility>

#include "files/media_files.h"

namespace kolum::tool {

scan::Selection mediaSelection(std::vector<std::string> excluded) {
  constexpr unsigned kKinds = MEDIA_KIND_BIT_VIDEO | MEDIA_KIND_BIT_MUSIC | MEDIA_KIND_BIT_PHOTO;
  const auto globs = std::make_shared<const std::vector<std::string>>(std::move(excluded));
  const auto isReached = [globs](std::string_view folder, const std::string& name) {
    return !isLeftOut(std::string(folder) + name, *globs);
  };
  const auto counts = [isReached](std::string_view folder, const std::string& name) {
    return kindByName(name, kKinds) != MEDIA_KIND_NONE && isReached(folder, name);
  };
  return {counts, isReached};
}

}  // namespace kolum::tool
