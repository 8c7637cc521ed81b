#include "media_files.h"

#include <kolum/filetype.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include "interruption.h"
#include "progress.h"

namespace kolum::tool {

namespace {

// Paths are joined in buffers of 1024 bytes; a longer one would name another file.
constexpr std::size_t kLongestPath = 1023;

// What makes a folder a disc, looked for in it and in the folder of that structure itself.
constexpr const char* kDiscIndexes[] = {"VIDEO_TS/VIDEO_TS.IFO", "VIDEO_TS.IFO", "BDMV/index.bdmv",
                                        "index.bdmv"};

class Walk {
 public:
  Walk(Context& context, unsigned kinds, const std::function<void(const MediaFile&)>& visit)
      : context_(context), kinds_(kinds), visit_(visit), progress_(context.channels) {}

  void named(const std::string& name) {
    struct stat status = {};
    if (stat(name.c_str(), &status) != 0) return context_.fail(name, systemFailure(errno));
    const bool isFolder = S_ISDIR(status.st_mode);
    const std::string index = isFolder ? discIndex(withSlash(name)) : "";
    if (!isFolder || !index.empty()) return file(isFolder ? index : name, true);
    const std::size_t before = visited_;
    folder(withSlash(name));
    if (visited_ == before) context_.note(name, "no media files in this folder");
  }

 private:
  int kindOf(const std::string& path, unsigned kinds) const {
    unsigned row = 0;
    unsigned tag = 0;
    return KoLUM_GetFilenameType(path.c_str(), &row, kinds, &tag);
  }

  void file(const std::string& path, bool isNamed) {
    Interruption::check();
    progress_.next(path);
    ++visited_;
    const MediaPath split = splitPath(path);
    if (split.full().size() > kLongestPath) {
      const std::string reason = "path longer than " + std::to_string(kLongestPath) + " characters";
      return context_.fail(path, Failure{Cause::kPathTooLong, reason});
    }
    const bool isDisc = split.name == kDvdIndex || split.name == kBluRayIndex;
    visit_({split, kindOf(split.name, kEveryKind), isNamed, isDisc});
  }

  static std::string withSlash(std::string path) {
    if (path.empty() || path.back() != '/') path += '/';
    return path;
  }

  // The index file of the disc in a folder, empty when it holds none.
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
    if ((kinds_ & kVideoBit) != 0) file(index, false);
  }

  // Names in byte order; folders that cannot be listed are reported.
  std::vector<std::string> entries(const std::string& path) {
    std::vector<std::string> names;
    std::error_code error;
    std::filesystem::directory_iterator entry(path, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
      names.push_back(entry->path().filename().string());
    }
    if (error) {
      failed(path, error.value());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  void failed(const std::string& path, int error) {
    ++visited_;
    context_.fail(path, systemFailure(error));
  }

  void entry(const std::string& path) {
    struct stat status = {};
    // What is gone since the folder was listed is no failure.
    if (lstat(path.c_str(), &status) != 0)
      return errno == ENOENT || errno == ENOTDIR ? void() : failed(path, errno);
    if (S_ISDIR(status.st_mode)) return subfolder(path + "/");
    if (S_ISLNK(status.st_mode) && stat(path.c_str(), &status) != 0) return;
    if (S_ISREG(status.st_mode) && kindOf(path, kinds_) != kNoMedia) file(path, false);
  }

  Context& context_;
  unsigned kinds_;
  const std::function<void(const MediaFile&)>& visit_;
  std::size_t visited_ = 0;
  Progress progress_;
  Interruption interruption_;
};

}  // namespace

void forEachMediaFile(Context& context, const FileArguments& names, unsigned kinds,
                      const std::function<void(const MediaFile&)>& visit) {
  requireNames(names);
  Walk walk(context, kinds, visit);
  forEachName(context, names, [&](const std::string& name) { walk.named(name); });
}

}  // namespace kolum::tool
