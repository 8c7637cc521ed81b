#include <kolum/audio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "describe/media_path.h"
#include "terminal/arguments.h"
#include "terminal/command.h"
#include "terminal/context.h"
#include "terminal/syntax.h"

namespace kolum::tool {

namespace {

struct Options {
  FileArguments files;
  bool names = false;
};

// The folder to search for a name: the name itself if it is a folder, else the folder it is in.
std::string folderOf(const std::string& name, bool isFolder) {
  return isFolder ? describe::withSlash(name) : describe::splitPath(name).folder;
}

void findCover(Context& context, const std::string& name) {
  struct stat status = {};
  if (stat(name.c_str(), &status) != 0) return context.fail(name, describe::systemFailure(errno));
  char cover[1024] = "";
  const std::string folder = folderOf(name, S_ISDIR(status.st_mode));
  const bool found = KoLUM_CheckLocalAlbum(folder.c_str(), cover) == 0;
  if (!found && access(folder.c_str(), X_OK) != 0)
    return context.fail(name, describe::systemFailure(errno));
  Result result = Result::ofFile(name);
  result.data("found", found);
  if (found) result.data("cover", cover);
  result.show("Cover", found ? cover : "(none)");
  context.printer.block(result);
}

void checkName(Context& context, const std::string& name) {
  const bool isCover = KoLUM_CheckSpecialCover(describe::splitPath(name).name.c_str()) == 0;
  Result result = Result::ofFile(name);
  result.data("isAlbumCover", isCover);
  result.show("Album cover", isCover ? "yes" : "no");
  context.printer.block(result);
}

}  // namespace

Action defineCover(Syntax& syntax) {
  auto options = std::make_shared<Options>();
  addFileArguments(syntax, options->files);
  syntax.flag("--names", options->names, "Says whether the names are those of covers");
  syntax.help(
      "Finds the album picture in a folder, or beside a song: cover.jpg, folder.jpg or front.jpg, "
      "in\n"
      "that order, also with a capital first letter.\n"
      "\nExample:\n  kolum cover Music/*/");
  return [options](Context& context) {
    forEachName(context, options->files, [&](const std::string& name) {
      if (options->names) {
        checkName(context, name);
      } else {
        findCover(context, name);
      }
    });
  };
}

}  // namespace kolum::tool
