// kolum-worker MEMORY idle|normal: reads media files for a host that must not be harmed by them.
//
// The process that the host starts is the nursery: it loads all libraries, then forks a worker for
// each socket that comes on descriptor 0. It never reads a file, and its workers never fork. When
// the host closes its end, or dies, the nursery ends all of them.
#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "isolation/message.h"
#include "sandbox.h"
#include "serve.h"

namespace {

using namespace kolum;
using namespace kolum::isolation;

// The numbers of <linux/ioprio.h>, which is not C++ in all releases.
void giveWay() {
  constexpr int kLowest = 19;
  constexpr int kThisProcess = 1;
  constexpr int kIdle = 3 << 13;  // the class; it has no levels
  setpriority(PRIO_PROCESS, 0, kLowest);
  syscall(SYS_ioprio_set, kThisProcess, 0, kIdle);
}

// Where the machine runs out of memory, the kernel is to end the reader of one file, and not what
// it was about to end with it: the host, or its neighbours.
void goFirst() {
  constexpr std::string_view kBeforeAllOthers = "1000";
  const Descriptor score(open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC));
  // Without /proc it remains as likely as its size makes it.
  if (!score.isOpen()) return;
  (void)!write(score.get(), kBeforeAllOthers.data(), kBeforeAllOthers.size());
}

// A process keeps its folder and all mounts of its namespace busy: the host's threads that mount
// images have mounts of their own, in which the file systems of removed disks would live on.
void leaveFolderAndMounts() {
  const std::string host = "/proc/" + std::to_string(getppid()) + "/ns/mnt";
  struct stat ours = {};
  struct stat theirs = {};
  if (stat("/proc/self/ns/mnt", &ours) == 0 && stat(host.c_str(), &theirs) == 0 &&
      ours.st_ino != theirs.st_ino) {
    const Descriptor mounts(open(host.c_str(), O_RDONLY | O_CLOEXEC));
    if (mounts.isOpen()) setns(mounts.get(), CLONE_NEWNS);
  }
  // Not possible without the right to it, in which case it remains where it is.
  if (chdir("/") != 0) return;
}

// Its parent is the host, which learns how it ended.
pid_t forkForHost() {
  return static_cast<pid_t>(
      syscall(SYS_clone, CLONE_PARENT | SIGCHLD, nullptr, nullptr, nullptr, 0));
}

[[noreturn]] void work(Descriptor socket, std::size_t memory, std::uint32_t layers) {
  close(STDIN_FILENO);
#ifndef KOLUM_SANITIZED
  // The host's may be a terminal, a log or a socket. Sanitizers report there.
  if (dup2(STDOUT_FILENO, STDERR_FILENO) < 0) _exit(1);
#endif
  serve(socket.get(), layers | enterSandbox(memory));
  // Nothing is worth being done at the end, such as writing files.
  _exit(0);
}

class Nursery {
 public:
  Nursery(std::size_t memory, std::uint32_t layers) : memory_(memory), layers_(layers) {}

  void run() {
    while (waitForHost() && answerHost()) {
    }
    for (const Descriptor& worker : workers_)
      syscall(SYS_pidfd_send_signal, worker.get(), SIGKILL, nullptr, 0);
  }

 private:
  // Closes the handles of workers that end meanwhile.
  bool waitForHost() {
    while (true) {
      std::vector<pollfd> waits = {{STDIN_FILENO, POLLIN, 0}};
      for (const Descriptor& worker : workers_) waits.push_back({worker.get(), POLLIN, 0});
      if (poll(waits.data(), waits.size(), -1) < 0 && errno != EINTR) return false;
      for (std::size_t i = workers_.size(); i > 0; --i)
        if (waits[i].revents != 0)
          workers_.erase(workers_.begin() + static_cast<std::ptrdiff_t>(i) - 1);
      if (waits[0].revents != 0) return true;
    }
  }

  bool answerHost() {
    std::uint8_t ask[1];
    Descriptor socket;
    if (receive(STDIN_FILENO, ask, &socket, {}) != Transfer::kDone) return false;
    const pid_t worker = forkForHost();
    if (worker == 0) {
      workers_.clear();
      work(std::move(socket), memory_, layers_);
    }
    const Birth birth = {.process = worker > 0 ? worker : 0, .error = worker < 0 ? errno : 0};
    if (worker > 0) workers_.emplace_back(static_cast<int>(syscall(SYS_pidfd_open, worker, 0)));
    return send(STDIN_FILENO, bytesOf(birth), {}, -1, {}) == Transfer::kDone;
  }

  const std::size_t memory_;
  const std::uint32_t layers_;
  std::vector<Descriptor> workers_;  // pidfds
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("kolum-worker is started by libkolum; it is not a command.\n", stderr);
    return 2;
  }
  if (std::string_view(argv[2]) == "idle") giveWay();
  goFirst();
  leaveFolderAndMounts();
  const std::uint32_t layers = dropPrivileges();
  Nursery(std::strtoull(argv[1], nullptr, 10), layers).run();
  // As for workers: at the end, nothing may write to files or the host's standard error.
  _exit(0);
}
