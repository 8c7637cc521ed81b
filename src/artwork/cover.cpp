#include "artwork/cover.h"

#include <kolum/host.h>

#include <algorithm>
#include <iterator>

#include "base/text.h"

namespace kolum::artwork {

namespace {

// In order of preference. Only these spellings count.
constexpr std::string_view kCoverNames[] = {
    "cover.jpg", "Cover.jpg", "folder.jpg", "Folder.jpg", "front.jpg", "Front.jpg",
};

}  // namespace

std::optional<std::string> coverIn(std::string_view folder) {
  for (const std::string_view name : kCoverNames) {
    std::string path = joinPath(folder, name);
    if (KoUtil_IsFileExist(path.c_str()) != 0) return path;
  }
  return std::nullopt;
}

bool isCoverName(std::string_view fileName) {
  return std::any_of(std::begin(kCoverNames), std::end(kCoverNames),
                     [&](std::string_view name) { return fileName.starts_with(name); });
}

}  // namespace kolum::artwork
