#include "support/appliance_sandbox.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace kolum::test {

namespace {

constexpr int kBodyFailed = 1;
constexpr int kNoSandbox = 2;

[[noreturn]] void fail(const std::string& what) {
  throw std::runtime_error(what + ": " + std::strerror(errno));
}

void mountOrFail(const std::string& source, const std::string& target, const char* type,
                 unsigned long flags, const std::string& options = "") {
  if (mount(source.c_str(), target.c_str(), type, flags, options.c_str()) != 0)
    fail("mounting " + target);
}

void writeMap(const char* file, const std::string& text) {
  std::ofstream out(file);
  out << text;
  if (!out.flush()) fail(std::string("writing ") + file);
}

// As root in the machine's own user namespace, or as root of a user namespace of our own.
void enterNamespaces() {
  const uid_t user = geteuid();
  const gid_t group = getegid();
  if (user == 0) {
    if (unshare(CLONE_NEWNS) != 0) fail("unshare");
    return;
  }
  if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) fail("unshare");
  writeMap("/proc/self/setgroups", "deny");
  writeMap("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
  writeMap("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
}

void enterSandbox(const std::string& work) {
  enterNamespaces();
  mountOrFail("none", "/", nullptr, MS_REC | MS_PRIVATE);
  mountOrFail("tmpfs", work, "tmpfs", 0, "size=512m");
  for (const char* part : {"/upper", "/work", "/root", "/build"}) fs::create_directory(work + part);

  // The build tree may lie under /tmp, which is to be empty in the sandbox.
  const std::string build = KOLUM_TEST_BUILD_FOLDER;
  mountOrFail(build, work + "/build", nullptr, MS_BIND);

  const std::string root = work + "/root";
  mountOrFail("overlay", root, "overlay", 0,
              "lowerdir=/,upperdir=" + work + "/upper,workdir=" + work + "/work");
  // What is mounted below "/" is not part of the overlay.
  for (const char* part : {"/dev", "/proc", "/sys"})
    mountOrFail(part, root + part, nullptr, MS_BIND | MS_REC);
  fs::create_directories(root + "/dev/shm");
  mountOrFail("tmpfs", root + "/dev/shm", "tmpfs", 0, "mode=1777");
  mountOrFail("tmpfs", root + "/tmp", "tmpfs", 0, "mode=1777");
  fs::create_directories(root + build);
  mountOrFail(work + "/build", root + build, nullptr, MS_BIND);

  if (chroot(root.c_str()) != 0 || chdir("/") != 0) fail("chroot");
}

// Runs the body in a sandboxed child; the child's exit status, or minus the number of its signal.
int runSandboxed(const std::function<void()>& body) {
  std::string work = (fs::temp_directory_path() / "kolum-sandbox-XXXXXX").string();
  if (mkdtemp(work.data()) == nullptr) fail("mkdtemp");
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    try {
      enterSandbox(work);
    } catch (const std::exception& error) {
      std::fprintf(stderr, "no sandbox: %s\n", error.what());
      _exit(kNoSandbox);
    }
    const bool failedBefore = ::testing::Test::HasFailure();
    try {
      body();
    } catch (const std::exception& error) {
      ADD_FAILURE() << "exception: " << error.what();
    }
    std::fflush(nullptr);
    _exit(!failedBefore && ::testing::Test::HasFailure() ? kBodyFailed : 0);
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  fs::remove(work);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace

std::optional<std::string> sandboxUnavailable() {
  static const int status = runSandboxed([] {});
  if (status == 0) return std::nullopt;
  return "no private mount namespace with an overlay can be had here";
}

void runInAppliance(const std::function<void()>& body) {
  EXPECT_EQ(runSandboxed(body), 0) << "the sandboxed process failed or crashed, see above";
}

void writeRootFile(const std::string& path, const std::string& content, unsigned mode) {
  fs::create_directories(fs::path(path).parent_path());
  std::ofstream out(path, std::ios::binary);
  out << content;
  if (!out.flush()) throw std::runtime_error("cannot write " + path);
  out.close();
  chmod(path.c_str(), mode);
}

}  // namespace kolum::test
