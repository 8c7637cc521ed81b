#include <fcntl.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <unordered_map>
#include <utility>

#include "base/descriptor.h"
#include "scan/beneath.h"
#include "scan/notices.h"

namespace kolum::scan {

namespace {

// A file that is written is complete when it is closed; that it was made is no reason to read it.
constexpr std::uint32_t kEvents = IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_MOVED_FROM |
                                  IN_MOVED_TO | IN_ATTRIB | IN_ONLYDIR | IN_DONT_FOLLOW |
                                  IN_EXCL_UNLINK;

class Inotify : public Notices {
 public:
  Inotify(Descriptor descriptor, Selection selection, std::vector<std::string> roots)
      : descriptor_(std::move(descriptor)),
        selection_(std::move(selection)),
        roots_(std::move(roots)) {}

  int descriptor() const override { return descriptor_.get(); }
  std::string obstacle() const override { return obstacle_; }

  bool addTree(const std::string& folder, Pulse& pulse) override {
    const auto root = std::find_if(roots_.begin(), roots_.end(), [&](const std::string& candidate) {
      return folder.starts_with(candidate);
    });
    if (root == roots_.end()) return true;
    const auto opened =
        std::make_shared<const Descriptor>(::open(root->c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!opened->isOpen()) return true;
    // Owned by nobody else: the pulse outlives the reader.
    const std::shared_ptr<Pulse> shared(&pulse, [](Pulse*) {});
    ReadOptions options;
    options.isNamesOnly = true;
    FolderReader reader(opened, shared, selection_, options);
    PendingFolders pending(folder.substr(root->size()));
    while (const auto next = pending.next()) {
      if (pulse.isStopWanted) return false;
      // First watched, then read: what appears meanwhile is seen either way.
      add(*opened, *root, *next);
      auto end = reader.read(*next, [](Piece&&) { return true; });
      if (end) pending.enter(std::move(*end));
    }
    return true;
  }

  bool read(const std::function<void(const Notice&)>& visit) override {
    alignas(inotify_event) std::array<char, 65536> buffer;
    bool isComplete = true;
    for (;;) {
      const ssize_t length = ::read(descriptor_.get(), buffer.data(), buffer.size());
      if (length < 0 && errno == EINTR) continue;
      if (length <= 0) return isComplete;
      for (const char* at = buffer.data(); at < buffer.data() + length;) {
        const auto* event = reinterpret_cast<const inotify_event*>(at);
        if ((event->mask & IN_Q_OVERFLOW) != 0) isComplete = false;
        handle(*event, visit);
        at += sizeof(inotify_event) + event->len;
      }
    }
  }

 private:
  void add(const Descriptor& root, const std::string& rootPath, const std::string& folder) {
    const Descriptor opened = Beneath(root.get()).openFolder(folder);
    if (!opened.isOpen()) return;
    // By its descriptor: its path may be longer than paths may be.
    const std::string name = "/proc/self/fd/" + std::to_string(opened.get());
    const int watch = inotify_add_watch(descriptor_.get(), name.c_str(), kEvents & ~IN_DONT_FOLLOW);
    if (watch >= 0) {
      folders_[watch] = rootPath + folder;
    } else if (errno == ENOSPC) {
      obstacle_ = "more folders than the system lets a user watch (fs.inotify.max_user_watches)";
    } else if (errno != ENOENT) {
      obstacle_ = rootPath + folder + " cannot be watched: " + std::strerror(errno);
    }
  }

  void handle(const inotify_event& event, const std::function<void(const Notice&)>& visit) {
    const auto found = folders_.find(event.wd);
    if (found == folders_.end()) return;
    if ((event.mask & IN_IGNORED) != 0) {
      folders_.erase(found);
      return;
    }
    if (event.len == 0) return;  // about the folder itself; the folder above has reported it
    const std::string folder = found->second;
    const bool isFolder = (event.mask & IN_ISDIR) != 0;
    const std::string name = event.name;
    if (isFolder && (event.mask & IN_MOVED_FROM) != 0) forget(folder + name + "/");
    const bool isMade = (event.mask & IN_CREATE) != 0;
    // A file that was made is reported when it is closed; a further link to one is not.
    if (isMade && !isFolder && !isLink(folder + name)) return;
    visit({folder, name, isFolder, isMade || (event.mask & IN_MOVED_TO) != 0});
  }

  static bool isLink(const std::string& path) {
    struct stat status = {};
    return lstat(path.c_str(), &status) == 0 && status.st_nlink > 1;
  }

  // A folder has left its place: until it appears elsewhere, it is none of ours.
  void forget(const std::string& folder) {
    for (auto at = folders_.begin(); at != folders_.end();) {
      if (!at->second.starts_with(folder)) {
        ++at;
        continue;
      }
      inotify_rm_watch(descriptor_.get(), at->first);
      at = folders_.erase(at);
    }
  }

  Descriptor descriptor_;
  Selection selection_;
  std::vector<std::string> roots_;
  std::unordered_map<int, std::string> folders_;
  std::string obstacle_;
};

}  // namespace

std::unique_ptr<Notices> inotifyNotices(const Selection& selection,
                                        const std::vector<std::string>& roots) {
  Descriptor descriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  if (!descriptor.isOpen()) return nullptr;
  return std::make_unique<Inotify>(std::move(descriptor), selection, roots);
}

}  // namespace kolum::scan
