#include "scan/walk.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace kolum::scan {

namespace {

struct DirectoryCloser {
  void operator()(DIR* directory) const { closedir(directory); }
};
using Directory = std::unique_ptr<DIR, DirectoryCloser>;

// Where a folder that is a disc has its index: in itself, or in a folder of it.
struct DiscIndex {
  const char* folder;
  const char* name;
};

constexpr std::array<DiscIndex, 4> kDiscIndexes = {{{"VIDEO_TS", "VIDEO_TS.IFO"},
                                                    {"", "VIDEO_TS.IFO"},
                                                    {"BDMV", "index.bdmv"},
                                                    {"", "index.bdmv"}}};

// An entry as it is listed.
struct Listed {
  std::string name;
  ino_t inode;
  unsigned char type;                // DT_...
  std::optional<Identity> identity;  // if it was needed to learn the type
};

bool isDot(const char* name) {
  return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// A folder while it is read.
class Reading {
 public:
  Reading(Directory directory, const std::string& path, const struct stat& status, Pulse& pulse,
          const Selection& selection, const ReadOptions& options,
          const std::function<bool(Piece&&)>& visit)
      : directory_(std::move(directory)),
        path_(path),
        pulse_(pulse),
        selection_(selection),
        options_(options),
        visit_(visit) {
    end_.device = status.st_dev;
    end_.inode = status.st_ino;
  }

  std::optional<FolderEnd> run() {
    const DiscIndex* index = discIndex();
    return index != nullptr ? disc(*index) : folder();
  }

 private:
  bool goesOn() const {
    pulse_.beats.fetch_add(1, std::memory_order_relaxed);
    return !pulse_.isStopWanted.load(std::memory_order_relaxed);
  }

  int descriptor() const { return dirfd(directory_.get()); }

  const DiscIndex* discIndex() const {
    const Beneath here(descriptor(), options_.way);
    for (const DiscIndex& index : kDiscIndexes) {
      const std::string folder = *index.folder == '\0' ? "" : std::string(index.folder) + "/";
      if (!selection_.countsFile(path_ + folder, index.name)) continue;
      const auto status = here.status(folder + index.name);
      if (status && S_ISREG(status->st_mode)) return &index;
    }
    return nullptr;
  }

  std::optional<FolderEnd> disc(const DiscIndex& index) {
    std::vector<Listed> files;
    if (*index.folder == '\0') {
      files.push_back({index.name, 0, DT_REG, std::nullopt});
    } else {
      end_.folders.emplace_back(index.folder);
    }
    return deliver(files, true, 0) ? std::optional(std::move(end_)) : std::nullopt;
  }

  std::optional<FolderEnd> folder() {
    std::vector<Listed> files;
    for (;;) {
      errno = 0;
      const dirent* entry = readdir(directory_.get());
      if (entry == nullptr) break;
      if (!goesOn()) return std::nullopt;
      add(*entry, files);
      if (files.size() < options_.pieceSize) continue;
      if (!deliver(files, false, 0)) return std::nullopt;
      files.clear();
    }
    const int error = errno;
    sortFolders();
    if (!deliver(files, true, error)) return std::nullopt;
    return std::move(end_);
  }

  void add(const dirent& entry, std::vector<Listed>& files) {
    if (isDot(entry.d_name)) return;
    Listed listed = {entry.d_name, entry.d_ino, entry.d_type, std::nullopt};
    if (listed.type == DT_UNKNOWN && !options_.isNamesOnly) askForType(listed);
    if (listed.type == DT_DIR) {
      if (selection_.entersFolder(path_, listed.name))
        folders_.emplace_back(options_.isByInode ? listed.inode : 0, std::move(listed.name));
    } else if (listed.type == DT_LNK) {
      if (selection_.countsFile(path_, listed.name)) ++end_.links;
    } else if (listed.type == DT_REG && selection_.countsFile(path_, listed.name)) {
      files.push_back(std::move(listed));
    }
  }

  // For file systems that list no types.
  void askForType(Listed& listed) const {
    struct stat status = {};
    if (statusOf(listed.name, status) != 0) return;
    listed.type = static_cast<unsigned char>(IFTODT(status.st_mode));
    listed.identity = identityOf(status);
  }

  int statusOf(const std::string& name, struct stat& status) const {
    return fstatat(descriptor(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT);
  }

  void sortFolders() {
    std::sort(folders_.begin(), folders_.end());
    for (auto& [inode, name] : folders_) end_.folders.push_back(std::move(name));
    folders_.clear();
  }

  bool deliver(std::vector<Listed>& listed, bool isLast, int error) {
    if (options_.isByInode)
      std::sort(listed.begin(), listed.end(),
                [](const Listed& a, const Listed& b) { return a.inode < b.inode; });
    Piece piece;
    piece.folder = path_;
    piece.device = end_.device;
    piece.isLast = isLast;
    piece.error = error;
    piece.files.reserve(listed.size());
    for (Listed& file : listed) {
      if (!goesOn()) return false;
      look(std::move(file), piece.files);
    }
    if (isLast) piece.folders = end_.folders;
    return visit_(std::move(piece));
  }

  void look(Listed&& file, std::vector<SeenFile>& files) const {
    if (options_.isNamesOnly) file.identity = Identity();
    if (file.identity) {
      files.push_back({std::move(file.name), *file.identity, 0});
      return;
    }
    struct stat status = {};
    if (statusOf(file.name, status) == 0) {
      if (S_ISREG(status.st_mode)) files.push_back({std::move(file.name), identityOf(status), 0});
    } else if (errno != ENOENT) {
      files.push_back({std::move(file.name), {}, errno});
    }
    // What was deleted or replaced since it was listed is not there.
  }

  Directory directory_;
  const std::string& path_;
  Pulse& pulse_;
  const Selection& selection_;
  const ReadOptions& options_;
  const std::function<bool(Piece&&)>& visit_;
  FolderEnd end_;
  std::vector<std::pair<ino_t, std::string>> folders_;
};

Piece failedPiece(const std::string& path, int error) {
  Piece piece;
  piece.folder = path;
  piece.isLast = true;
  piece.error = error;
  return piece;
}

}  // namespace

bool isReached(const Selection& selection, std::string_view path) {
  std::size_t begin = 0;
  for (std::size_t slash = path.find('/'); slash != std::string_view::npos;
       slash = path.find('/', begin)) {
    const std::string name(path.substr(begin, slash - begin));
    if (!selection.entersFolder(path.substr(0, begin), name)) return false;
    begin = slash + 1;
  }
  return begin == path.size() ||
         selection.countsFile(path.substr(0, begin), std::string(path.substr(begin)));
}

std::optional<std::string> PendingFolders::next() {
  if (!std::exchange(hasBegun_, true)) {
    path_ = first_;
    return path_;
  }
  while (!levels_.empty() && levels_.back().folders.empty()) levels_.pop_back();
  if (levels_.empty()) return std::nullopt;
  Level& level = levels_.back();
  path_.resize(level.length);
  path_ += level.folders.back();
  path_ += '/';
  level.folders.pop_back();
  return path_;
}

bool PendingFolders::enter(FolderEnd&& end) {
  if (!isRecursive_ || end.folders.empty()) return true;
  const auto isSame = [&](const Level& level) {
    return level.device == end.device && level.inode == end.inode;
  };
  if (std::any_of(levels_.begin(), levels_.end(), isSame)) return false;
  const auto longest = std::max_element(
      end.folders.begin(), end.folders.end(),
      [](const std::string& a, const std::string& b) { return a.size() < b.size(); });
  if (path_.size() + longest->size() + 1 > kLongestPath) return false;
  std::reverse(end.folders.begin(), end.folders.end());
  levels_.push_back({path_.size(), end.device, end.inode, std::move(end.folders)});
  return true;
}

FolderReader::FolderReader(std::shared_ptr<const Descriptor> root, std::shared_ptr<Pulse> pulse,
                           Selection selection, ReadOptions options)
    : root_(std::move(root)),
      pulse_(std::move(pulse)),
      selection_(std::move(selection)),
      options_(options) {}

Descriptor FolderReader::open(const std::string& path) const {
  if (last_.isOpen() && path.size() > lastPath_.size() && path.starts_with(lastPath_))
    return Beneath(last_.get(), options_.way)
        .openFolder(std::string_view(path).substr(lastPath_.size()));
  return Beneath(root_->get(), options_.way).openFolder(path);
}

std::optional<FolderEnd> FolderReader::read(const std::string& path,
                                            const std::function<bool(Piece&&)>& visit) {
  Descriptor folder = open(path);
  struct stat status = {};
  // The stream gets a descriptor of its own, which it closes.
  Descriptor copy(folder.isOpen() ? fcntl(folder.get(), F_DUPFD_CLOEXEC, 0) : -1);
  Directory directory(copy.isOpen() && fstat(copy.get(), &status) == 0 ? fdopendir(copy.get())
                                                                       : nullptr);
  if (directory == nullptr) {
    visit(failedPiece(path, errno));
    return std::nullopt;
  }
  copy.release();
  last_ = std::move(folder);
  lastPath_ = path;
  return Reading(std::move(directory), path, status, *pulse_, selection_, options_, visit).run();
}

}  // namespace kolum::scan
