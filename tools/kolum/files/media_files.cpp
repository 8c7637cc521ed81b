#include "files/media_files.h"

#include <kolum/filetype.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include "describe/describe.h"
#include "files/selection.h"
#include "files/skipped_files.h"
#include "terminal/interruption.h"
#include "terminal/progress.h"
#include "terminal/syntax.h"

namespace kolum::tool {

namespace {

// The library joins paths in buffers of 1024 bytes; a longer one would name another file.
constexpr std::size_t kLongestPath = 1023;

// The index file that makes a folder a disc, in it or in the folder of that structure itself.
constexpr const char* kDiscIndexes[] = {"VIDEO_TS/VIDEO_TS.IFO", "VIDEO_TS.IFO", "BDMV/index.bdmv",
                                        "index.bdmv"};

std::string_view lastPart(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

constexpr const char* kNoFiles = "no media files in this folder";

int kindByName(const std::string& path, unsigned kinds) {
  unsigned row = 0;
  unsigned tag = 0;
  return KoLUM_GetFilenameType(std::string(lastPart(path)).c_str(), &row, kinds, &tag);
}

bool isOfKinds(int kind, unsigned kinds) {
  switch (kind) {
    case MEDIA_KIND_MUSIC:
      return (kinds & MEDIA_KIND_BIT_MUSIC) != 0;
    case MEDIA_KIND_VIDEO:
      return (kinds & MEDIA_KIND_BIT_VIDEO) != 0;
    case MEDIA_KIND_PHOTO:
      return (kinds & MEDIA_KIND_BIT_PHOTO) != 0;
    default:
      return false;
  }
}

class Walk {
 public:
  Walk(Context& context, const MediaFileArguments& arguments, unsigned kinds,
       const std::function<void(const MediaFile&)>& visit,
       const std::function<void(const std::string&, const Failure&)>& fail)
      : context_(context),
        arguments_(arguments),
        kinds_(kinds),
        visit_(visit),
        fail_(fail),
        progress_(context.channels) {}

  void named(const std::string& name) {
    struct stat status = {};
    if (stat(name.c_str(), &status) != 0) return fail_(name, describe::systemFailure(errno));
    const bool isFolder = S_ISDIR(status.st_mode);
    const std::string index = isFolder ? discIndex(describe::withSlash(name)) : "";
    if (isFolder && index.empty()) return namedFolder(name);
    const std::string& path = isFolder ? index : name;
    const bool isFile = S_ISREG(status.st_mode) || S_ISBLK(status.st_mode);
    file(path, isFile ? kindOf(path) : kindByName(path, MEDIA_KIND_BITS_ALL), true);
  }

 private:
  int kindOf(const std::string& path) const {
    return kindOfFile(describe::splitPath(path), arguments_.byContent);
  }

  void namedFolder(const std::string& name) {
    skipped_ = {};
    isKnownFound_ = false;
    below_ = describe::withSlash(name).size();
    const std::size_t before = visited_;
    folder(describe::withSlash(name));
    const bool isEmpty = visited_ == before && skipped_.areNone();
    if (isEmpty) context_.note(name, kNoFiles);
    if (!skipped_.areNone()) reportSkipped(name);
  }

  // Reported as a failure if there is nothing else in the folder.
  void reportSkipped(const std::string& name) {
    std::string text = skipped_.text();
    if (!arguments_.byContent) text += "; --all decides by their content";
    if (isKnownFound_) return context_.note(name, text);
    fail_(name, Failure{Cause::kNothingKnown, std::string(kNoFiles) + ": " + text});
  }

  void file(const std::string& path, int kind, bool isNamed) {
    Interruption::check();
    progress_.next(path);
    ++visited_;
    isKnownFound_ = true;
    const describe::MediaPath split = describe::splitPath(path);
    if (const auto failure = lengthFailure(split)) return fail_(path, *failure);
    const bool isDisc = split.name == kDvdIndex || split.name == kBluRayIndex;
    visit_({split, kind, isNamed, isDisc});
  }

  // The index file of the disc in a folder, empty if there is none.
  static std::string discIndex(const std::string& folder) {
    struct stat status = {};
    for (const char* index : kDiscIndexes) {
      if (stat((folder + index).c_str(), &status) == 0 && S_ISREG(status.st_mode))
        return folder + index;
    }
    return "";
  }

  void folder(const std::string& path) {
    for (const std::string& name : entries(path)) entry(path + name);
  }

  void subfolder(const std::string& path) {
    const std::string index = discIndex(path);
    if (index.empty()) return folder(path);
    if ((kinds_ & MEDIA_KIND_BIT_VIDEO) != 0) file(index, MEDIA_KIND_VIDEO, false);
  }

  // Names in byte order; folders that cannot be listed are reported.
  std::vector<std::string> entries(const std::string& path) {
    std::vector<std::string> names;
    std::error_code error;
    std::filesystem::directory_iterator entry(path, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
      names.push_back(entry->path().filename().string());
    }
    if (error) failed(path, error.value());
    std::sort(names.begin(), names.end());
    return names;
  }

  void failed(const std::string& path, int error) {
    ++visited_;
    isKnownFound_ = true;
    fail_(path, describe::systemFailure(error));
  }

  void entry(const std::string& path) {
    // Decided by the name, even with --all.
    if (isLeftOut(std::string_view(path).substr(below_), arguments_.excluded)) return;
    struct stat status = {};
    // A file deleted since the folder was listed, or a dangling link, is not a failure.
    if (lstat(path.c_str(), &status) != 0)
      return errno == ENOENT || errno == ENOTDIR ? void() : failed(path, errno);
    if (S_ISDIR(status.st_mode)) return subfolder(path + "/");
    if (S_ISLNK(status.st_mode) && stat(path.c_str(), &status) != 0) return;
    if (S_ISREG(status.st_mode)) found(path);
  }

  void found(const std::string& path) {
    const int kind = kindOf(path);
    if (kind == MEDIA_KIND_NONE) return skipped_.add(lastPart(path));
    isKnownFound_ = true;
    // Some extensions belong to several kinds.
    const bool isWanted = arguments_.byContent ? isOfKinds(kind, kinds_)
                                               : kindByName(path, kinds_) != MEDIA_KIND_NONE;
    if (isWanted) file(path, kind, false);
  }

  Context& context_;
  const MediaFileArguments& arguments_;
  unsigned kinds_;
  const std::function<void(const MediaFile&)>& visit_;
  const std::function<void(const std::string&, const Failure&)>& fail_;
  std::size_t visited_ = 0;
  std::size_t below_ = 0;  // length of the named folder, with its "/"
  SkippedFiles skipped_;
  bool isKnownFound_ = false;  // in that folder, including other kinds
  Progress progress_;
  Interruption interruption_;
};

}  // namespace

int kindOfFile(const describe::MediaPath& path, bool byContent) {
  return byContent ? describe::kindByContent(path) : kindByName(path.name, MEDIA_KIND_BITS_ALL);
}

std::optional<Failure> lengthFailure(const describe::MediaPath& path) {
  if (path.full().size() <= kLongestPath) return std::nullopt;
  return Failure{Cause::kPathTooLong,
                 "path longer than " + std::to_string(kLongestPath) + " characters"};
}

void addMediaFileArguments(Syntax& syntax, MediaFileArguments& arguments, Words (*leadingWords)()) {
  addFileArguments(syntax, arguments.names, leadingWords);
  syntax.flag("--all", arguments.byContent, "Decides by the files' content, not by their names");
  syntax.option("-j,--jobs", {"N"}, arguments.jobs, {1, kMostJobs},
                "Files that are read at a time; else as many as there are processors");
  addExcludeOption(syntax, arguments.excluded);
}

void forEachMediaFile(Context& context, const MediaFileArguments& arguments, unsigned kinds,
                      const std::function<void(const MediaFile&)>& visit,
                      const std::function<void(const std::string&, const Failure&)>& fail) {
  requireNames(arguments.names);
  Walk walk(context, arguments, kinds, visit, fail);
  forEachName(context, arguments.names, [&](const std::string& name) { walk.named(name); });
}

}  // namespace kolum::tool
