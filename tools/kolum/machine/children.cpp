#include "machine/children.h"

#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <system_error>

namespace kolum::tool {

void killChildren() {
  std::error_code error;
  std::filesystem::directory_iterator thread("/proc/self/task", error);
  for (; !error && thread != std::filesystem::directory_iterator(); thread.increment(error)) {
    std::ifstream list(thread->path() / "children");
    for (pid_t child = 0; list >> child;) {
      if (getpgid(child) == child) kill(-child, SIGKILL);
      kill(child, SIGKILL);
    }
  }
}

}  // namespace kolum::tool
