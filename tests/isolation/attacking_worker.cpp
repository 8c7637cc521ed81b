// A worker that a file has taken over: what it does follows from the file's name, up to its
// extension. Attacks on the machine report in the format of the recognition how they ended; attacks
// on the host do not.
#include <arpa/inet.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "isolation/message.h"
#include "isolation/wire.h"
#include "serve.h"

namespace {

using namespace kolum;
using namespace kolum::isolation;

std::string outcome(long result) {
  return result >= 0 ? "succeeded" : std::strerror(errno);
}

// --- On the machine

std::string openFile() {
  return outcome(open("/etc/passwd", O_RDONLY | O_CLOEXEC));
}
std::string createFile() {
  return outcome(open("/tmp/kolum-attack", O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
}
std::string listFolder() {
  return outcome(open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}
std::string openOwnFile() {
  return outcome(open("/proc/self/mem", O_RDWR | O_CLOEXEC));
}
std::string forkProcess() {
  const pid_t child = fork();
  if (child == 0) _exit(0);
  return outcome(child);
}
std::string forkByClone3() {
  struct {
    std::uint64_t flags[8];
  } arguments = {};
  const long child = syscall(SYS_clone3, &arguments, sizeof arguments);
  if (child == 0) _exit(0);
  return outcome(child);
}
std::string killParent() {
  return outcome(kill(getppid(), SIGTERM));
}
std::string killNeighbours() {
  return outcome(kill(-1, SIGKILL));
}
std::string raiseLimit() {
  const rlimit more = {RLIM_INFINITY, RLIM_INFINITY};
  return outcome(setrlimit(RLIMIT_AS, &more));
}
std::string raiseTimeLimit() {
  const rlimit more = {RLIM_INFINITY, RLIM_INFINITY};
  return outcome(setrlimit(RLIMIT_CPU, &more));
}
// The nursery is a process of the same user.
std::string moveNeighbours() {
  constexpr pid_t kNear = 500;
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(0, &one);
  int moved = 0;
  for (pid_t process = getpid() - 1; process > getpid() - kNear; --process)
    if (process > 0 && sched_setaffinity(process, sizeof one, &one) == 0) ++moved;
  return moved > 0 ? "succeeded" : "failed";
}
std::string lookForFile() {
  struct stat status = {};
  return outcome(syscall(SYS_newfstatat, AT_FDCWD, "/etc/passwd", &status, AT_EMPTY_PATH));
}
std::string filterSocket() {
  constexpr int kHostsSocket = 3;
  const int on = 1;
  int done = -1;
  for (int socket = 0; socket <= kHostsSocket; ++socket)
    done = std::max(done, setsockopt(socket, SOL_SOCKET, SO_PASSCRED, &on, sizeof on));
  return outcome(done);
}
std::string writeToStandardError() {
  constexpr std::string_view kText = "of the worker";
  return ::write(STDERR_FILENO, kText.data(), kText.size()) >= 0 ? "written" : "failed";
}
std::string becomeRoot() {
  return outcome(setuid(0));
}
std::string mapCode() {
  void* code =
      mmap(nullptr, 4096, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return outcome(code == MAP_FAILED ? -1 : 0);
}
std::string becomeDumpable() {
  return outcome(prctl(PR_SET_DUMPABLE, 1, 0, 0, 0));
}
std::string openManyFiles() {
  int opened = 0;
  while (opened < 100 && dup(STDERR_FILENO) >= 0) ++opened;
  return opened < 10 ? "failed" : "succeeded";
}
std::string forkBomb() {
  int forks = 0;
  while (forks < 1000) {
    const pid_t child = fork();
    if (child == 0) continue;
    if (child < 0) break;
    ++forks;
  }
  return forks == 0 ? "failed" : "succeeded";
}
std::string hostsEnvironment() {
  return getenv("KOLUM_TEST_SECRET") != nullptr ? "succeeded" : "failed";
}

// These are not survived.
std::string runProgram() {
  return outcome(execl("/bin/true", "true", nullptr));
}
std::string connectOut() {
  return outcome(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
}
std::string traceParent() {
  return outcome(ptrace(PTRACE_ATTACH, getppid(), nullptr, nullptr));
}
std::string mountFileSystem() {
  return outcome(mount("tmpfs", "/tmp", "tmpfs", 0, ""));
}
std::string crash() {
  std::raise(SIGSEGV);
  return "survived";
}
std::string abortItself() {
  std::abort();
}
std::string stopItself() {
  syscall(SYS_tgkill, getpid(), gettid(), SIGSTOP);
  return "survived";
}
std::string burnTime() {
  for (unsigned long i = 0;; ++i) asm volatile("" : : "r"(i));
}
std::string takeMemory() {
  while (void* memory = std::malloc(std::size_t{16} << 20))
    std::memset(memory, 1, std::size_t{16} << 20);
  return "failed";
}

const std::map<std::string, std::string (*)()> kAttacks = {
    {"openFile", openFile},
    {"createFile", createFile},
    {"listFolder", listFolder},
    {"openOwnFile", openOwnFile},
    {"forkProcess", forkProcess},
    {"forkByClone3", forkByClone3},
    {"killParent", killParent},
    {"killNeighbours", killNeighbours},
    {"raiseLimit", raiseLimit},
    {"raiseTimeLimit", raiseTimeLimit},
    {"moveNeighbours", moveNeighbours},
    {"lookForFile", lookForFile},
    {"filterSocket", filterSocket},
    {"writeToStandardError", writeToStandardError},
    {"becomeRoot", becomeRoot},
    {"mapCode", mapCode},
    {"becomeDumpable", becomeDumpable},
    {"openManyFiles", openManyFiles},
    {"forkBomb", forkBomb},
    {"hostsEnvironment", hostsEnvironment},
    {"runProgram", runProgram},
    {"connectOut", connectOut},
    {"traceParent", traceParent},
    {"mountFileSystem", mountFileSystem},
    {"crash", crash},
    {"abort", abortItself},
    {"stop", stopItself},
    {"burnTime", burnTime},
    {"takeMemory", takeMemory},
};

// --- On the host

void answer(int socket, const Header& header, const std::vector<std::uint8_t>& bytes) {
  send(socket, bytesOf(header), bytes, -1, {});
}

Header headerFor(std::uint64_t number, std::size_t size) {
  return {.number = number,
          .size = static_cast<std::uint32_t>(size),
          .isLast = 0,
          .processor = 0,
          .unused = 0};
}

std::vector<std::uint8_t> plainAnswer(const std::string& text) {
  read::Findings findings;
  findings.recognition.format = text;
  // For scans, which see no more of an answer than this.
  findings.picture = {text == "succeeded" ? 666 : 40, 30, "rgb24"};
  return encode(findings);
}

void garbage(int socket, std::uint64_t number) {
  answer(socket, headerFor(number, 1000), std::vector<std::uint8_t>(1000, 0xAA));
}
void anotherFile(int socket, std::uint64_t number) {
  const auto bytes = plainAnswer("of another file");
  answer(socket, headerFor(number + 1, bytes.size()), bytes);
}
void hugeAnswer(int socket, std::uint64_t number) {
  answer(socket, headerFor(number, 0xFFFFFFFF), {});
}
void endlessAnswer(int socket, std::uint64_t number) {
  const std::vector<std::uint8_t> more(1 << 16, 0);
  answer(socket, headerFor(number, kLongestMessage), {});
  while (send(socket, more, {}, -1, {}) == Transfer::kDone) {
  }
}
// Never ends, and never stops either.
void trickle(int socket, std::uint64_t number) {
  answer(socket, headerFor(number, kLongestMessage), {});
  const std::vector<std::uint8_t> byte(1, 0);
  while (send(socket, byte, {}, -1, {}) == Transfer::kDone) {
    // Sleeping is forbidden.
    const auto next = std::chrono::steady_clock::now() + std::chrono::milliseconds(20);
    while (std::chrono::steady_clock::now() < next) {
    }
  }
}
void twoAnswers(int socket, std::uint64_t number) {
  const auto bytes = plainAnswer("first");
  answer(socket, headerFor(number, bytes.size()), bytes);
  answer(socket, headerFor(number, bytes.size()), bytes);
}
void halfAnAnswer(int socket, std::uint64_t number) {
  const auto bytes = plainAnswer("half");
  answer(socket, headerFor(number, bytes.size() * 2), bytes);
  _exit(0);
}
void descriptors(int socket, std::uint64_t number) {
  const auto bytes = plainAnswer("with descriptors");
  const Header header = headerFor(number, bytes.size());
  // One with each part, in the hope that the host keeps them.
  send(socket, bytesOf(header), {}, STDERR_FILENO, {});
  send(socket, bytes, {}, STDERR_FILENO, {});
}
// Two of them with each byte: as many as fit into the space that the alignment leaves for one.
void pairsOfDescriptors(int socket, std::uint64_t number) {
  const auto bytes = plainAnswer("with pairs");
  const Header header = headerFor(number, bytes.size());
  std::vector<std::uint8_t> all(bytesOf(header).begin(), bytesOf(header).end());
  all.insert(all.end(), bytes.begin(), bytes.end());
  for (std::uint8_t& byte : all) {
    alignas(cmsghdr) char control[CMSG_SPACE(2 * sizeof(int))] = {};
    iovec part = {&byte, 1};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* first = CMSG_FIRSTHDR(&message);
    first->cmsg_level = SOL_SOCKET;
    first->cmsg_type = SCM_RIGHTS;
    first->cmsg_len = CMSG_LEN(2 * sizeof(int));
    const int pair[] = {STDOUT_FILENO, STDOUT_FILENO};
    std::memcpy(CMSG_DATA(first), pair, sizeof pair);
    // The kernel lets a user have only some on their way.
    while (sendmsg(socket, &message, MSG_NOSIGNAL) != 1)
      if (errno != ETOOMANYREFS) return;
  }
}
void fail(int socket, std::uint64_t number, read::FailureCause cause) {
  read::Findings findings;
  findings.failure = {cause, "anything\nthat a log\033[2J believes"};
  findings.recognition.format = "in spite of it";
  const auto bytes = encode(findings);
  answer(socket, headerFor(number, bytes.size()), bytes);
}
void blameTheHost(int socket, std::uint64_t number) {
  fail(socket, number, read::FailureCause::kNoReader);
}
void forgeLog(int socket, std::uint64_t number) {
  fail(socket, number, read::FailureCause::kOutOfMemory);
}
void forgeTerminal(int socket, std::uint64_t number) {
  read::Findings findings;
  findings.keyFrameTrace.error("\033]0;anything\007\n");
  const auto bytes = encode(findings);
  answer(socket, headerFor(number, bytes.size()), bytes);
}
// Small on the way, large in the host.
void grow(int socket, std::uint64_t number) {
  read::Findings findings;
  findings.container.emplace().streams.resize(5000);
  const auto bytes = encode(findings);
  answer(socket, headerFor(number, bytes.size()), bytes);
}
void closeSocket(int socket, std::uint64_t /*number*/) {
  close(socket);
  burnTime();
}
void sleepForEver(int socket, std::uint64_t /*number*/) {
  std::uint8_t none[1];
  receive(socket, none, nullptr, {});
}
void exitQuietly(int /*socket*/, std::uint64_t /*number*/) {
  _exit(0);
}

const std::map<std::string, void (*)(int, std::uint64_t)> kLies = {
    {"garbage", garbage},
    {"anotherFile", anotherFile},
    {"hugeAnswer", hugeAnswer},
    {"endlessAnswer", endlessAnswer},
    {"trickle", trickle},
    {"twoAnswers", twoAnswers},
    {"halfAnAnswer", halfAnAnswer},
    {"descriptors", descriptors},
    {"closeSocket", closeSocket},
    {"exit", exitQuietly},
    {"pairsOfDescriptors", pairsOfDescriptors},
    {"blameTheHost", blameTheHost},
    {"forgeLog", forgeLog},
    {"forgeTerminal", forgeTerminal},
    {"grow", grow},
    {"sleep", sleepForEver},
};

}  // namespace

void kolum::isolation::serve(int socket, std::uint32_t layers) {
  Hello hello = {};
  std::memcpy(hello.version, kVersion, sizeof hello.version);
  hello.layers = layers;
  send(socket, bytesOf(hello), {}, -1, {});
  while (true) {
    Header header = {};
    Descriptor file;
    if (receive(socket, writableBytesOf(header), &file, {}) != Transfer::kDone) return;
    std::vector<std::uint8_t> bytes(header.size);
    if (receive(socket, bytes, nullptr, {}) != Transfer::kDone) return;
    const std::string fileName = decodeRequest(bytes).value_or(Request{}).fileName;
    const std::string name = fileName.substr(0, fileName.find('.'));
    if (const auto lie = kLies.find(name); lie != kLies.end()) {
      lie->second(socket, header.number);
      continue;
    }
    const auto attack = kAttacks.find(name);
    const auto found = plainAnswer(attack != kAttacks.end() ? attack->second() : "nothing");
    answer(socket, headerFor(header.number, found.size()), found);
  }
}
