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

// Runs in the child. The trace line and the environment must stay although neither is safe after a
// fork from several threads: log filters and tools depend on them. Nothing may be added. A program
// that cannot be started exits with 0, because hosts call tools that only some appliances have.
[[noreturn]] void runInChild(const char** argv) {
  TRACE("\n");
  setenv("LD_LIBRARY_PATH", "/usr:/usr/lib", 1);
  // execvp takes non-const arguments for historical reasons only; it does not change them.
  execvp(argv[0], const_cast<char**>(argv));
  _exit(0);
}

// The child's wait status. A failed fork gives 0, like a program that cannot be started; waiting
// for it would wait for any other child of the host and take its status.
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
