#include "ini_update.h"

#include <fcntl.h>
#include <iniparser.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "ascii.h"
#include "ini_text.h"

namespace kolum::setcfg {

namespace {

namespace fs = std::filesystem;

// Every run uses the same name, which the lock on the folder makes safe: the next run cleans up
// after a killed one.
constexpr char kNewFile[] = ".setcfg.new";
constexpr std::size_t kMaxFileSize = 16 << 20;
constexpr int kMaxLinks = 40;  // as the kernel's limit
constexpr std::chrono::seconds kLockWait{5};
constexpr std::chrono::milliseconds kLockPause{5};
constexpr mode_t kPrivateMode = 0600;
constexpr mode_t kNewFileMode = 0666;  // minus the umask
constexpr mode_t kModeBits = 07777;

[[noreturn]] void fail(const std::string& what) {
  throw std::runtime_error(what + ": " + std::system_category().message(errno));
}

class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() {
    if (fd_ >= 0) close(fd_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int get() const { return fd_; }
  bool isOpen() const { return fd_ >= 0; }

 private:
  int fd_;
};

// Where the name leads through links; the last link may lead to nothing yet.
fs::path followLinks(fs::path path) {
  for (int i = 0; i < kMaxLinks; ++i) {
    std::error_code isNoLink;
    const fs::path target = fs::read_symlink(path, isNoLink);
    if (isNoLink) return path;
    path = target.is_absolute() ? target : path.parent_path() / target;
  }
  throw std::runtime_error("too many links");
}

fs::path folderOf(const fs::path& path) {
  return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

// The folder, locked against other runs while this object exists.
class LockedFolder {
 public:
  explicit LockedFolder(const fs::path& folder)
      : fd_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (!fd_.isOpen()) fail("cannot open the folder");
    const auto bound = std::chrono::steady_clock::now() + kLockWait;
    while (flock(fd_.get(), LOCK_EX | LOCK_NB) != 0) {
      if (errno != EWOULDBLOCK && errno != EINTR) fail("cannot lock the folder");
      if (std::chrono::steady_clock::now() > bound) {
        throw std::runtime_error("the folder stays locked by another program");
      }
      std::this_thread::sleep_for(kLockPause);
    }
  }

  int fd() const { return fd_.get(); }

 private:
  Descriptor fd_;
};

struct OldFile {
  struct stat status {};
  std::string text;
};

std::string readAll(int fd) {
  std::string text;
  std::array<char, 65536> block{};
  for (;;) {
    const ssize_t count = read(fd, block.data(), block.size());
    if (count == 0) return text;
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail("cannot read");
    text.append(block.data(), static_cast<std::size_t>(count));
    if (text.size() > kMaxFileSize) throw std::runtime_error("too large");
  }
}

// Empty if there is no such file yet. O_NONBLOCK keeps a FIFO from blocking.
std::optional<OldFile> readOldFile(const LockedFolder& folder, const std::string& name) {
  const Descriptor fd(openat(folder.fd(), name.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!fd.isOpen() && errno == ENOENT) return std::nullopt;
  if (!fd.isOpen()) fail("cannot open");
  OldFile old;
  if (fstat(fd.get(), &old.status) != 0) fail("cannot open");
  if (!S_ISREG(old.status.st_mode)) throw std::runtime_error("not a regular file");
  old.text = readAll(fd.get());
  return old;
}

// The file that will replace the old one; deleted unless it does.
class NewFile {
 public:
  NewFile(const LockedFolder& folder, fs::path path)
      : folder_(folder), path_(std::move(path)), fd_(create(folder)) {
    if (!fd_.isOpen()) fail("cannot write to the folder");
  }
  ~NewFile() {
    if (!isInPlace_) unlinkat(folder_.fd(), kNewFile, 0);
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  const fs::path& path() const { return path_; }

  void write(std::string_view text) {
    if (ftruncate(fd_.get(), 0) != 0) fail("cannot write");
    off_t at = 0;
    while (!text.empty()) {
      const ssize_t count = pwrite(fd_.get(), text.data(), text.size(), at);
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) fail("cannot write");
      at += count;
      text.remove_prefix(static_cast<std::size_t>(count));
    }
  }

  void takeUsualMode() {
    const mode_t mask = umask(0);
    umask(mask);
    if (fchmod(fd_.get(), kNewFileMode & ~mask) != 0) fail("cannot set the mode");
  }

  void takeModeAndOwner(const struct stat& old) {
    struct stat mine {};
    if (fstat(fd_.get(), &mine) != 0) fail("cannot write");
    const bool isMine = mine.st_uid == old.st_uid && mine.st_gid == old.st_gid;
    if (!isMine && fchown(fd_.get(), old.st_uid, old.st_gid) != 0) fail("cannot keep the owner");
    if (fchmod(fd_.get(), old.st_mode & kModeBits) != 0) fail("cannot keep the mode");
  }

  void moveTo(const std::string& name) {
    if (fsync(fd_.get()) != 0) fail("cannot write");
    if (renameat(folder_.fd(), kNewFile, folder_.fd(), name.c_str()) != 0) fail("cannot replace");
    isInPlace_ = true;
    fsync(folder_.fd());  // best effort: the file is complete under its name either way
  }

 private:
  static int create(const LockedFolder& folder) {
    unlinkat(folder.fd(), kNewFile, 0);
    return openat(folder.fd(), kNewFile, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kPrivateMode);
  }

  const LockedFolder& folder_;
  fs::path path_;
  Descriptor fd_;
  bool isInPlace_ = false;
};

struct FreeDictionary {
  void operator()(dictionary* ini) const { iniparser_freedict(ini); }
};

// Everything iniparser reads from a file, as "[section:key]=[value]" per entry; empty if the file
// is not valid.
std::optional<std::set<std::string>> entriesOf(const fs::path& path) {
  const std::unique_ptr<dictionary, FreeDictionary> ini(iniparser_load(path.c_str()));
  if (!ini) return std::nullopt;
  char* dump = nullptr;
  std::size_t size = 0;
  FILE* out = open_memstream(&dump, &size);
  if (out == nullptr) fail("out of memory");
  iniparser_dump(ini.get(), out);
  std::fclose(out);
  const std::unique_ptr<char, decltype(&std::free)> owner(dump, std::free);

  std::set<std::string> entries;
  for (std::string_view rest(dump, size); !rest.empty();) {
    const std::size_t end = std::min(rest.find('\n'), rest.size() - 1);
    entries.emplace(rest.substr(0, end));
    rest.remove_prefix(end + 1);
  }
  return entries;
}

std::set<std::string> withEntry(std::set<std::string> entries, const std::string& section,
                                const std::string& key, const std::string& value) {
  // iniparser folds the case of sections and keys like this.
  const std::string lowerSection = ascii::lower(section);
  const std::string start = "[" + lowerSection + ":" + ascii::lower(key) + "]=";
  std::erase_if(entries, [&](const std::string& entry) { return entry.starts_with(start); });
  entries.insert(start + "[" + value + "]");
  entries.insert("[" + lowerSection + "]=UNDEF");
  return entries;
}

int silent(const char* /*format*/, ...) {
  return 0;
}

}  // namespace

void setKey(const std::string& file, const std::string& section, const std::string& key,
            const std::string& value) {
  iniparser_set_error_callback(silent);
  const fs::path path = followLinks(file);
  const fs::path folderPath = folderOf(path);
  const std::string name = path.filename();
  const LockedFolder folder(folderPath);
  const std::optional<OldFile> old = readOldFile(folder, name);
  const std::string oldText = old ? old->text : "";

  NewFile fresh(folder, folderPath / kNewFile);
  fresh.write(oldText);
  const auto oldEntries = entriesOf(fresh.path());
  if (!oldEntries) throw std::runtime_error("not a valid ini file");
  const std::set<std::string> wanted = withEntry(*oldEntries, section, key, value);

  const KeyPlace place(oldText, section, key);
  for (const std::string& written : waysToWrite(value, place.quote())) {
    const std::string text = place.with(written);
    fresh.write(text);
    if (entriesOf(fresh.path()) != wanted) continue;
    if (old && text == oldText) return;
    if (old) {
      fresh.takeModeAndOwner(old->status);
    } else {
      fresh.takeUsualMode();
    }
    fresh.moveTo(name);
    return;
  }
  throw std::runtime_error("no ini file can hold this key and value");
}

}  // namespace kolum::setcfg
