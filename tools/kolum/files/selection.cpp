#include "files/selection.h"

#include <fnmatch.h>
#include <kolum/filetype.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "terminal/syntax.h"

namespace kolum::tool {

namespace {

// Folders that are not hidden by their names but contain programs' files for the media.
constexpr std::string_view kHelperFolders[] = {"@eaDir"};

constexpr unsigned kProbedKinds =
    MEDIA_KIND_BIT_VIDEO | MEDIA_KIND_BIT_MUSIC | MEDIA_KIND_BIT_PHOTO;

std::string_view lastPart(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

// A GLOB with a "/" is for the whole path.
bool isMatch(std::string glob, std::string_view path) {
  while (glob.size() > 1 && glob.ends_with('/')) glob.pop_back();
  const bool isPathGlob = glob.find('/') != std::string::npos;
  const std::string subject(isPathGlob ? path : lastPart(path));
  return fnmatch(glob.c_str(), subject.c_str(), FNM_PATHNAME) == 0;
}

bool isMediaName(const std::string& name) {
  unsigned row = 0;
  unsigned tag = 0;
  return KoLUM_GetFilenameType(name.c_str(), &row, kProbedKinds, &tag) != MEDIA_KIND_NONE;
}

}  // namespace

void addExcludeOption(Syntax& syntax, std::vector<std::string>& globs) {
  syntax.repeatedOption("--exclude", {"GLOB"}, globs,
                        "Leaves out matching files and folders; may be repeated");
}

bool isLeftOut(std::string_view path, const std::vector<std::string>& globs) {
  const std::string_view name = lastPart(path);
  if (name.starts_with('.')) return true;
  return std::find(std::begin(kHelperFolders), std::end(kHelperFolders), name) !=
             std::end(kHelperFolders) ||
         std::any_of(globs.begin(), globs.end(),
                     [&](const std::string& glob) { return isMatch(glob, path); });
}

scan::Selection mediaSelection(std::vector<std::string> globs, bool byContent) {
  const auto shared = std::make_shared<const std::vector<std::string>>(std::move(globs));
  const auto isOut = [shared](std::string_view folder, const std::string& name) {
    // Most scans have no globs, for which alone the path has to be put together.
    return shared->empty() ? isLeftOut(name, *shared)
                           : isLeftOut(std::string(folder) + name, *shared);
  };
  return {.countsFile =
              [isOut, byContent](std::string_view folder, const std::string& name) {
                return (byContent || isMediaName(name)) && !isOut(folder, name);
              },
          .entersFolder = [isOut](std::string_view folder,
                                  const std::string& name) { return !isOut(folder, name); }};
}

}  // namespace kolum::tool
