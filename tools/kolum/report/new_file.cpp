#include "report/new_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace kolum::tool {

namespace {

[[noreturn]] void fail() {
  throw FileError(std::strerror(errno));
}

mode_t permissions() {
  const mode_t mask = umask(0);
  umask(mask);
  return (S_IRUSR | S_IWUSR) & ~mask;
}

// Otherwise, the limit of a shell for files' sizes would end the process before it tidies up.
void reportLimitAsError() {
  struct sigaction ignore = {};
  ignore.sa_handler = SIG_IGN;
  sigaction(SIGXFSZ, &ignore, nullptr);
}

std::string kindOf(mode_t mode) {
  if (S_ISDIR(mode)) return "a folder";
  if (S_ISFIFO(mode)) return "a pipe";
  if (S_ISSOCK(mode)) return "a socket";
  return "a device";
}

// What is to be replaced: the target of a link.
std::string target(const std::string& path) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0) {
    if (errno != ENOENT) fail();
    return path;
  }
  char resolved[PATH_MAX];
  if (realpath(path.c_str(), resolved) == nullptr || stat(resolved, &status) != 0) fail();
  if (!S_ISREG(status.st_mode))
    throw FileError("is " + kindOf(status.st_mode) +
                    ", not a file; \"-\" writes to standard output");
  return resolved;
}

}  // namespace

NewFile::NewFile(const std::string& path) : path_(target(path)) {
  reportLimitAsError();
  std::string name = path_ + ".XXXXXX";
  file_.reset(mkostemp(name.data(), O_CLOEXEC));
  if (!file_.isOpen()) fail();
  temporary_ = name;
}

NewFile::~NewFile() {
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

void NewFile::write(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(file_.get(), text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) fail();
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

void NewFile::commit() {
  if (fchmod(file_.get(), permissions()) != 0 || fsync(file_.get()) != 0) fail();
  if (rename(temporary_.c_str(), path_.c_str()) != 0) fail();
  temporary_.clear();
}

}  // namespace kolum::tool
