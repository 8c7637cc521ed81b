#include "support/appliance_sandbox.h"

#include <fcntl.h>
#include <mntent.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include "support/child_process.h"
#include "support/leak_check.h"

namespace fs = std::filesystem;

namespace kolum::test {

namespace {

// Not overlaid, because the media that tests make are kept in it.
const std::string kBuildFolder = KOLUM_TEST_BUILD_FOLDER;
// Some tests run scripts from it.
const std::string kSourceFolder = KOLUM_TEST_SOURCE_FOLDER;

// Where the sandbox is assembled, in its own mount namespace: a folder that exists everywhere, so
// that none has to be made and removed.
const std::string kAssembly = "/tmp";
const std::string kNewRoot = kAssembly + "/root";

// Folders that are not overlaid: the system's, and /tmp, which starts empty.
constexpr std::array kSystemFolders = {"/dev", "/proc", "/sys"};
const std::string kTemporaryFolder = "/tmp";
const std::string kMemoryFolder = "/dev/shm";

[[noreturn]] void fail(const std::string& what) {
  throw std::runtime_error(what + ": " + std::strerror(errno));
}

bool tryMount(const std::string& source, const std::string& target, const char* type,
              unsigned long flags, const std::string& options = "") {
  return mount(source.c_str(), target.c_str(), type, flags, options.c_str()) == 0;
}

void mountOrFail(const std::string& source, const std::string& target, const char* type,
                 unsigned long flags, const std::string& options = "") {
  if (!tryMount(source, target, type, flags, options)) fail("mounting " + target);
}

void writeMap(const char* file, const std::string& text) {
  std::ofstream out(file);
  out << text;
  if (!out.flush()) fail(std::string("writing ") + file);
}

// Becomes root: in the machine's user namespace if it is already, otherwise in a new one.
void enterNamespaces() {
  const uid_t user = geteuid();
  const gid_t group = getegid();
  if (user == 0) {
    if (unshare(CLONE_NEWNS) != 0) fail("making a mount namespace");
    return;
  }
  if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) fail("making a user and a mount namespace");
  writeMap("/proc/self/setgroups", "deny");
  writeMap("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
  writeMap("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
}

bool isWithin(const std::string& path, const std::string& folder) {
  return path == folder || path.starts_with(folder + "/");
}

bool isOverlaid(const std::string& path) {
  return !isWithin(path, kTemporaryFolder) &&
         std::none_of(kSystemFolders.begin(), kSystemFolders.end(),
                      [&](const char* folder) { return isWithin(path, folder); });
}

// The mount points below "/" that an overlay of "/" does not cover, parents first.
std::vector<std::string> otherMounts() {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> table(setmntent("/proc/self/mounts", "re"),
                                                              endmntent);
  if (table == nullptr) fail("reading the mounts");
  std::vector<std::string> paths;
  mntent entry = {};
  std::array<char, 65536> buffer = {};
  while (getmntent_r(table.get(), &entry, buffer.data(), static_cast<int>(buffer.size())) !=
         nullptr) {
    const std::string path = entry.mnt_dir;
    if (path != "/" && isOverlaid(path)) paths.push_back(path);
  }
  std::sort(paths.begin(), paths.end());
  paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
  return paths;
}

// Makes a folder in LAYER for each one in LOWER, up to LEVELS deep.
void takeOverFolders(const fs::path& lower, const fs::path& layer, int levels) {
  std::error_code error;
  fs::create_directories(layer);
  fs::permissions(layer, fs::status(lower).permissions() | fs::perms::owner_all, error);
  if (levels <= 0) return;
  for (const fs::directory_entry& entry : fs::directory_iterator(lower, error))
    if (!entry.is_symlink(error) && entry.is_directory(error))
      takeOverFolders(entry.path(), layer / entry.path().filename(), levels - 1);
}

// Unmounts PATH of the new root if it cannot be made read-only.
void makeReadOnly(const std::string& path) {
  const std::string target = kNewRoot + path;
  mount_attr readOnly = {};
  readOnly.attr_set = MOUNT_ATTR_RDONLY;
  if (mount_setattr(AT_FDCWD, target.c_str(), 0, &readOnly, sizeof readOnly) != 0 &&
      umount2(target.c_str(), MNT_DETACH) != 0)
    fail("protecting " + path);
}

// Assembles the new root from the machine's file systems.
class RootBuilder {
 public:
  // In a user namespace the machine's folders belong to nobody, and even root may write there only
  // if the overlay's upper layer has these folders. Three levels include /etc/config and
  // /usr/local/bin.
  explicit RootBuilder(bool isMachineRoot)
      : levelsToTakeOver_(isMachineRoot ? 0 : 3), mounts_(otherMounts()) {}

  void build() {
    fs::create_directory(kNewRoot);
    if (tryOverlay("/")) {
      for (const std::string& path : mounts_)
        if (!tryOverlay(path)) bindReadOnly(path);
    } else {
      coverEntries("/");
    }
    for (const std::string folder : kSystemFolders) fs::create_directories(kNewRoot + folder);
    fs::create_directories(kNewRoot + kTemporaryFolder);
  }

 private:
  bool tryOverlay(const std::string& path) {
    // These separate the options of an overlay.
    if (path.find_first_of(",:\\") != std::string::npos) return false;
    const std::string layers = kAssembly + "/" + std::to_string(overlays_++);
    const auto depth = path == "/" ? 0 : std::count(path.begin(), path.end(), '/');
    takeOverFolders(path, layers + "/upper", levelsToTakeOver_ - static_cast<int>(depth));
    fs::create_directory(layers + "/work");
    return tryMount(
        "overlay", kNewRoot + path, "overlay", 0,
        "lowerdir=" + path + ",upperdir=" + layers + "/upper,workdir=" + layers + "/work");
  }

  // For single files, and for file systems that cannot be overlaid. One that cannot be mounted this
  // way either is missing in the sandbox.
  static void bindReadOnly(const std::string& path) {
    if (tryMount(path, kNewRoot + path, nullptr, MS_BIND)) makeReadOnly(path);
  }

  // A user namespace cannot overlay a folder with mounts below it, so its entries are covered one
  // by one.
  void coverEntries(const fs::path& folder) {
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error))
      if (isOverlaid(entry.path())) coverEntry(entry);
  }

  void coverEntry(const fs::directory_entry& entry) {
    const std::string path = entry.path();
    const std::string target = kNewRoot + path;
    std::error_code error;
    if (entry.is_symlink(error)) {
      fs::copy_symlink(path, target, error);
    } else if (!entry.is_directory(error)) {
      std::ofstream(target).flush();
      bindReadOnly(path);
    } else {
      fs::create_directory(target);
      if (tryOverlay(path)) return;
      if (hasMountsBelow(path))
        coverEntries(path);
      else
        bindReadOnly(path);
    }
  }

  bool hasMountsBelow(const std::string& path) const {
    return std::any_of(mounts_.begin(), mounts_.end(), [&](const std::string& mounted) {
      return mounted != path && isWithin(mounted, path);
    });
  }

  int levelsToTakeOver_;
  std::vector<std::string> mounts_;
  int overlays_ = 0;
};

void freshFolder(const std::string& path) {
  if (fs::exists(kNewRoot + path))
    mountOrFail("tmpfs", kNewRoot + path, "tmpfs", 0, "mode=1777,size=512m");
}

// A folder that a later mount may hide, so it is opened beforehand.
class HeldFolder {
 public:
  explicit HeldFolder(std::string path)
      : path_(std::move(path)), descriptor_(open(path_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {
    if (descriptor_ < 0) fail("opening " + path_);
  }
  ~HeldFolder() { close(descriptor_); }
  HeldFolder(const HeldFolder&) = delete;
  HeldFolder& operator=(const HeldFolder&) = delete;

  // Mounts it at the same path in the new root.
  void mountInNewRoot() const {
    fs::create_directories(kNewRoot + path_);
    mountOrFail("/proc/self/fd/" + std::to_string(descriptor_), kNewRoot + path_, nullptr,
                MS_BIND | MS_REC);
  }

 private:
  const std::string path_;
  const int descriptor_;
};

void enterSandbox() {
  const bool isMachineRoot = geteuid() == 0;
  enterNamespaces();
  mountOrFail("none", "/", nullptr, MS_REC | MS_PRIVATE);
  const HeldFolder sources(kSourceFolder);
  const HeldFolder build(kBuildFolder);

  RootBuilder root(isMachineRoot);
  mountOrFail("tmpfs", kAssembly, "tmpfs", 0, "size=512m");
  root.build();
  for (const std::string folder : kSystemFolders)
    mountOrFail(folder, kNewRoot + folder, nullptr, MS_BIND | MS_REC);
  for (const std::string& folder : {kMemoryFolder, kTemporaryFolder}) {
    freshFolder(folder);
    if (!isWithin(kSourceFolder, folder)) continue;
    sources.mountInNewRoot();
    makeReadOnly(kSourceFolder);
  }
  build.mountInNewRoot();

  if (chroot(kNewRoot.c_str()) != 0 || chdir("/") != 0) fail("entering the new root");
}

// Why a child could not enter the sandbox; empty if it could.
std::string whySandboxFails() {
  std::array<int, 2> ends = {};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) fail("pipe2");
  const pid_t child = fork();
  if (child == 0) {
    std::string why;
    try {
      enterSandbox();
    } catch (const std::exception& error) {
      why = error.what();
    }
    _exit(write(ends[1], why.data(), why.size()) == static_cast<ssize_t>(why.size()) ? 0 : 1);
  }
  close(ends[1]);
  std::array<char, 1024> why = {};
  const ssize_t size = child < 0 ? -1 : read(ends[0], why.data(), why.size());
  close(ends[0]);
  int status = -1;
  if (child > 0) waitpid(child, &status, 0);
  if (size < 0 || status != 0) return "the process that tried it failed";
  return {why.data(), static_cast<std::size_t>(size)};
}

}  // namespace

std::optional<std::string> sandboxUnavailable() {
  static const std::string kWhy = whySandboxFails();
  if (kWhy.empty()) return std::nullopt;
  return "no sandbox is possible here: " + kWhy;
}

void runInAppliance(const std::function<void()>& body) {
  runInChild([&] {
    enterSandbox();
    const LeakCheck check;
    body();
    check.expectNothingNew();
  });
}

void writeRootFile(const std::string& path, const std::string& content, unsigned mode) {
  fs::create_directories(fs::path(path).parent_path());
  // In a user namespace the machine's files can be replaced but not changed.
  std::error_code ignored;
  fs::remove(path, ignored);
  std::ofstream out(path, std::ios::binary);
  out << content;
  out.close();
  if (!out) throw std::runtime_error("cannot write " + path);
  if (chmod(path.c_str(), mode) != 0) fail("chmod " + path);
}

}  // namespace kolum::test
