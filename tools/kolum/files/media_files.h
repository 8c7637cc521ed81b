// From the names a caller gave to the files to examine: a folder becomes the media in it.
#ifndef KOLUM_TOOL_FILES_MEDIA_FILES_H
#define KOLUM_TOOL_FILES_MEDIA_FILES_H

#include <kolum/filetype.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "describe/media_path.h"
#include "terminal/arguments.h"
#include "terminal/context.h"

namespace kolum::tool {

// The index files that represent a disc.
inline constexpr std::string_view kDvdIndex = "VIDEO_TS.IFO";
inline constexpr std::string_view kBluRayIndex = "index.bdmv";

// The largest value of options that take a number of jobs.
inline constexpr int kMostJobs = 256;

struct MediaFile {
  describe::MediaPath path;
  int kind;      // by its name, or with --all by its content
  bool isNamed;  // by the caller, directly or as a disc's folder; else found in a folder
  bool isDisc;   // the index file of a DVD or Blu-ray folder
};

// The kind of a file (MEDIA_KIND_*) by its name; BYCONTENT: by its content, or by its name if the
// content does not say.
int kindOfFile(const describe::MediaPath& path, bool byContent);

// For paths that the library cannot take.
std::optional<Failure> lengthFailure(const describe::MediaPath& path);

// "FILE..." of a command that walks folders, with the options that select files there.
struct MediaFileArguments {
  FileArguments names;
  bool byContent = false;
  int jobs = 0;  // files that are read at a time; 0: as many as there are processors
  std::vector<std::string> excluded;
};

void addMediaFileArguments(Syntax& syntax, MediaFileArguments& arguments,
                           Words (*leadingWords)() = nullptr);

// Calls VISIT for every file behind the names, in order and as they come. A folder with a DVD
// (VIDEO_TS.IFO) or a Blu-ray disc (index.bdmv) counts as one video, named by that file. Any other
// folder is walked in byte order of its entries, and its files of the wanted KINDS count. Hidden
// entries, excluded ones and symbolic links to folders are left out there, and files of unknown
// kinds are counted and reported. A named file always counts, whatever its name. Names that do not
// exist, and paths longer than the library takes, are reported.
// FAIL gets the failures.
void forEachMediaFile(Context& context, const MediaFileArguments& arguments, unsigned kinds,
                      const std::function<void(const MediaFile&)>& visit,
                      const std::function<void(const std::string&, const Failure&)>& fail);

}  // namespace kolum::tool

#endif
