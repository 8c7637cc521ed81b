#include <fcntl.h>
#include <limits.h>
#include <sys/fanotify.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <map>
#include <string_view>
#include <utility>

#include "base/descriptor.h"
#include "scan/notices.h"

namespace kolum::scan {

namespace {

constexpr std::uint64_t kEvents = FAN_CLOSE_WRITE | FAN_CREATE | FAN_DELETE | FAN_MOVED_FROM |
                                  FAN_MOVED_TO | FAN_ATTRIB | FAN_ONDIR;

using FileSystemId = std::array<int, 2>;

class Fanotify : public Notices {
 public:
  explicit Fanotify(Descriptor descriptor) : descriptor_(std::move(descriptor)) {}

  // The file system that a folder is on.
  bool add(const std::string& folder) {
    Descriptor place(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct statfs status = {};
    if (!place.isOpen() || fstatfs(place.get(), &status) != 0) return false;
    FileSystemId id = {};
    std::memcpy(id.data(), &status.f_fsid, sizeof id);
    if (id == FileSystemId{}) return false;  // its events could not be attributed
    if (fanotify_mark(descriptor_.get(), FAN_MARK_ADD | FAN_MARK_FILESYSTEM, kEvents, AT_FDCWD,
                      folder.c_str()) != 0)
      return false;
    places_[id] = std::move(place);
    return canResolve(folder, id);
  }

  int descriptor() const override { return descriptor_.get(); }
  bool addTree(const std::string&, Pulse&) override { return true; }
  std::string obstacle() const override { return ""; }

  bool read(const std::function<void(const Notice&)>& visit) override {
    std::array<char, 65536> buffer;
    bool isComplete = true;
    for (;;) {
      const ssize_t length = ::read(descriptor_.get(), buffer.data(), buffer.size());
      if (length < 0 && errno == EINTR) continue;
      if (length <= 0) return isComplete;
      std::string_view events(buffer.data(), static_cast<std::size_t>(length));
      // Copied before it is looked at: events with names are not aligned.
      fanotify_event_metadata event = {};
      while (copyFrom(events, event) && event.event_len >= sizeof event &&
             event.event_len <= events.size()) {
        if (event.fd >= 0) close(event.fd);
        if ((event.mask & FAN_Q_OVERFLOW) != 0) {
          isComplete = false;
        } else {
          handle(event, events.substr(event.metadata_len, event.event_len - event.metadata_len),
                 visit);
        }
        events.remove_prefix(event.event_len);
      }
    }
  }

 private:
  // A file handle with the bytes behind it.
  class Handle {
   public:
    file_handle* get() { return reinterpret_cast<file_handle*>(bytes_.data()); }

   private:
    alignas(file_handle) std::array<unsigned char, sizeof(file_handle) + MAX_HANDLE_SZ> bytes_ = {};
  };

  // Opening by handles needs a right of its own, which containers may lack.
  bool canResolve(const std::string& folder, const FileSystemId& id) const {
    Handle handle;
    handle.get()->handle_bytes = MAX_HANDLE_SZ;
    int mount = 0;
    return name_to_handle_at(AT_FDCWD, folder.c_str(), handle.get(), &mount, 0) == 0 &&
           !pathOf(id, handle.get()).empty();
  }

  // With a trailing "/"; empty if the folder is gone.
  std::string pathOf(const FileSystemId& id, file_handle* handle) const {
    const auto place = places_.find(id);
    if (place == places_.end()) return "";
    const Descriptor folder(open_by_handle_at(place->second.get(), handle, O_PATH | O_CLOEXEC));
    if (!folder.isOpen()) return "";
    std::array<char, PATH_MAX> path = {};
    const std::string link = "/proc/self/fd/" + std::to_string(folder.get());
    const ssize_t length = readlink(link.c_str(), path.data(), path.size());
    if (length <= 0 || static_cast<std::size_t>(length) >= path.size()) return "";
    std::string name(path.data(), static_cast<std::size_t>(length));
    return name.ends_with('/') ? name : name + "/";
  }

  template <typename Value>
  static bool copyFrom(std::string_view bytes, Value& value) {
    if (bytes.size() < sizeof value) return false;
    std::memcpy(&value, bytes.data(), sizeof value);
    return true;
  }

  // INFO: what follows the event's head. A folder's handle, and a name that NUL ends.
  void handle(const fanotify_event_metadata& event, std::string_view info,
              const std::function<void(const Notice&)>& visit) const {
    fanotify_event_info_fid head = {};
    if (!copyFrom(info, head) || head.hdr.info_type != FAN_EVENT_INFO_TYPE_DFID_NAME) return;
    FileSystemId id = {};
    std::memcpy(id.data(), &head.fsid, sizeof id);
    info.remove_prefix(sizeof head);
    file_handle handleHead = {};
    if (!copyFrom(info, handleHead) || handleHead.handle_bytes > MAX_HANDLE_SZ) return;
    const std::size_t handleSize = sizeof handleHead + handleHead.handle_bytes;
    if (info.size() <= handleSize) return;
    Handle folder;
    std::memcpy(folder.get(), info.data(), handleSize);
    const std::string name(info.data() + handleSize,
                           strnlen(info.data() + handleSize, info.size() - handleSize));
    if (name == ".") return;  // the folder itself
    const std::string path = pathOf(id, folder.get());
    if (path.empty()) return;
    const bool isFolder = (event.mask & FAN_ONDIR) != 0;
    const bool isOnlyMade = (event.mask & kEvents & ~std::uint64_t{FAN_ONDIR}) == FAN_CREATE;
    // As for inotify: a file is complete when it is closed; a further link is so at once.
    if (isOnlyMade && !isFolder && !isLink(path + name)) return;
    visit({path, name, isFolder, (event.mask & (FAN_CREATE | FAN_MOVED_TO)) != 0});
  }

  static bool isLink(const std::string& path) {
    struct stat status = {};
    return lstat(path.c_str(), &status) == 0 && status.st_nlink > 1;
  }

  Descriptor descriptor_;
  std::map<FileSystemId, Descriptor> places_;
};

}  // namespace

std::unique_ptr<Notices> fanotifyNotices(const std::vector<std::string>& roots,
                                         const Storage& storage) {
  Descriptor descriptor(fanotify_init(
      FAN_CLASS_NOTIF | FAN_CLOEXEC | FAN_NONBLOCK | FAN_REPORT_DFID_NAME, O_RDONLY | O_CLOEXEC));
  if (!descriptor.isOpen()) return nullptr;
  auto notices = std::make_unique<Fanotify>(std::move(descriptor));
  for (const std::string& root : roots) {
    if (!notices->add(root)) return nullptr;
    for (const std::string& mount : storage.mountsBelow(root))
      if (!notices->add(mount)) return nullptr;
  }
  return notices;
}

}  // namespace kolum::scan
