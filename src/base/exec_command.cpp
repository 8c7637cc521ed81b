#include "base/exec_command.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "base/log.h"

namespace kolum {

namespace {

constexpr char kSource[] = "kolum_util";
constexpr char kTraceColour[] = "\033[1;35m";  // bold magenta

#define TRACE(...) \
  koDebugUtilWrapperPrint(kLogLevel, kTraceColour, kSource, __LINE__, "ExecCommand", __VA_ARGS__)

// The child's part. The trace line and the environment are wanted although neither is safe in a
// process forked off several threads; nothing may be added. Status 0 for a program that cannot be
// started is wanted, too: hosts call tools that only some appliances have.
[[noreturn]] void runInChild(const char** argv) {
  TRACE("\n");
  setenv("LD_LIBRARY_PATH", "/usr:/usr/lib", 1);
  // execvp takes the arguments as non-const for historic reasons only and changes nothing.
  execvp(argv[0], const_cast<char**>(argv));
  _exit(0);
}

// The child's wait status. A fork that failed leaves 0, like a program that cannot be started;
// waiting then would take, and wait for, any other child of the host.
int waitForChild(pid_t child) {
  int status = 0;
  if (child < 0) return status;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

int resultOf(int status, bool wantsExitCode) {
  if (WTERMSIG(status) != 0) return 1;
  const int code = WEXITSTATUS(status);
  return wantsExitCode ? code : static_cast<int>(code != 0);
}

}  // namespace

int execCommand(const char** argv, bool wantsExitCode) {
  const pid_t child = fork();
  if (child == 0) runInChild(argv);
  TRACE("\n");
  const int status = waitForChild(child);
  TRACE(" status = %d \n", status);
  return resultOf(status, wantsExitCode);
}

}  // namespace kolum
