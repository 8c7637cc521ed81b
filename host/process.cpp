#include <kolum/host.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

namespace {

// The program's exit status, or -1.
int waitFor(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0)
    if (errno != EINTR) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

int KoUtil_ExecSync(const char** argv, int /*wait*/) {
  if (argv == nullptr || argv[0] == nullptr) return -1;
  pid_t child = 0;
  // posix_spawnp takes non-const arguments for historical reasons only; it does not change them.
  if (posix_spawnp(&child, argv[0], nullptr, nullptr, const_cast<char**>(argv), environ) != 0)
    return -1;
  return waitFor(child);
}
