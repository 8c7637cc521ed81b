#include "sandbox.h"

#include <fcntl.h>
#include <grp.h>
#include <linux/capability.h>
#include <pwd.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "base/descriptor.h"
#include "isolation/message.h"

namespace kolum::isolation {

namespace {

std::uint32_t layerIf(bool isActive, Layer layer) {
  return isActive ? std::uint32_t{layer} : 0;
}

// --- Privileges

bool dropCapabilities() {
  __user_cap_header_struct header = {.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
  const __user_cap_data_struct none[2] = {};
  return syscall(SYS_capset, &header, none) == 0;
}

bool becomeNobody() {
  constexpr unsigned kNobody = 65534;
  return setgroups(0, nullptr) == 0 && setresgid(kNobody, kNobody, kNobody) == 0 &&
         setresuid(kNobody, kNobody, kNobody) == 0;
}

// --- Files

// The kernel's interface, of which older headers know only a part. Later versions of it know more
// rights; a worker gives up all of them.
struct LandlockRules {
  std::uint64_t files;
  std::uint64_t network;
  std::uint64_t scopes;
};

struct LandlockVersion {
  long version;
  std::size_t size;  // of the structure, as far as this version knows it
  LandlockRules rules;
};

constexpr std::uint64_t firstBits(unsigned count) {
  return (std::uint64_t{1} << count) - 1;
}

constexpr LandlockVersion kLandlockVersions[] = {
    {1, 8, {firstBits(13), 0, 0}},
    {2, 8, {firstBits(14), 0, 0}},
    {3, 8, {firstBits(15), 0, 0}},
    {4, 16, {firstBits(15), firstBits(2), 0}},
    {5, 16, {firstBits(16), firstBits(2), 0}},
    {6, 24, {firstBits(16), firstBits(2), firstBits(2)}},
};

// No rule allows anything.
bool closeFileSystem() {
  constexpr long kCreateRuleset = 444;
  constexpr long kRestrictSelf = 446;
  constexpr unsigned kAskVersion = 1;
  const long version = syscall(kCreateRuleset, nullptr, 0, kAskVersion);
  if (version < 1) return false;
  const auto* known = std::rbegin(kLandlockVersions).base();
  do --known;
  while (known->version > version);
  const int rules = static_cast<int>(syscall(kCreateRuleset, &known->rules, known->size, 0));
  if (rules < 0) return false;
  const bool isClosed = syscall(kRestrictSelf, rules, 0) == 0;
  close(rules);
  return isClosed;
}

// --- Limits

#ifndef KOLUM_SANITIZED
// Bytes of address space.
std::size_t usedMemory() {
  const Descriptor file(open("/proc/self/statm", O_RDONLY | O_CLOEXEC));
  std::array<char, 64> text = {};
  if (!file.isOpen() || ::read(file.get(), text.data(), text.size() - 1) <= 0) return 0;
  return std::strtoul(text.data(), nullptr, 10) * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}
#endif

bool limit(__rlimit_resource resource, rlim_t most) {
  const rlimit value = {most, most};
  return setrlimit(resource, &value) == 0;
}

bool setLimits([[maybe_unused]] std::size_t memory) {
  // A worker never has more than its socket, a file, and the standard ones.
  constexpr rlim_t kDescriptors = 8;
  // Standard error may be a file: what FFmpeg says is then lost, which must not end the worker.
  signal(SIGXFSZ, SIG_IGN);
  const bool areSet = limit(RLIMIT_CORE, 0) && limit(RLIMIT_FSIZE, 0) &&
                      limit(RLIMIT_NOFILE, kDescriptors) && limit(RLIMIT_NPROC, 0) &&
                      limit(RLIMIT_CPU, static_cast<rlim_t>(kLongestLife.count()));
#ifdef KOLUM_SANITIZED
  // Sanitizers reserve terabytes.
  return areSet && false;
#else
  const std::size_t used = usedMemory();
  return used != 0 && areSet && limit(RLIMIT_AS, used + memory);
#endif
}

// --- System calls

#ifndef KOLUM_SANITIZED
class Filter {
 public:
  // Everything else fails, so that a library that tries something harmless goes on.
  Filter() : context_(seccomp_init(SCMP_ACT_ERRNO(EPERM))), isGood_(context_ != nullptr) {}
  ~Filter() { seccomp_release(context_); }
  Filter(const Filter&) = delete;
  Filter& operator=(const Filter&) = delete;

  template <typename... Conditions>
  void allow(int call, Conditions... conditions) {
    add(SCMP_ACT_ALLOW, call, conditions...);
  }
  // What only an attacker does.
  void kill(int call) { add(SCMP_ACT_KILL_PROCESS, call); }
  bool load() { return isGood_ && seccomp_load(context_) == 0; }

 private:
  template <typename... Conditions>
  void add(std::uint32_t action, int call, Conditions... conditions) {
    isGood_ = isGood_ &&
              seccomp_rule_add(context_, action, call, sizeof...(Conditions), conditions...) == 0;
  }

  scmp_filter_ctx context_;
  bool isGood_;
};

constexpr int kAllowedCalls[] = {
    // Reading the file
    SCMP_SYS(read),
    SCMP_SYS(pread64),
    SCMP_SYS(readv),
    SCMP_SYS(preadv),
    SCMP_SYS(lseek),
    SCMP_SYS(fstat),
    SCMP_SYS(close),
    // The host
    SCMP_SYS(recvmsg),
    SCMP_SYS(sendmsg),
    // Memory
    SCMP_SYS(munmap),
    SCMP_SYS(mremap),
    SCMP_SYS(madvise),
    SCMP_SYS(brk),
    SCMP_SYS(futex),
    // Time, randomness, facts about the process
    SCMP_SYS(clock_gettime),
    SCMP_SYS(clock_getres),
    SCMP_SYS(gettimeofday),
    SCMP_SYS(time),
    SCMP_SYS(getrandom),
    SCMP_SYS(getrusage),
    SCMP_SYS(getpid),
    SCMP_SYS(gettid),
    SCMP_SYS(sysinfo),
    SCMP_SYS(uname),
    // Signals and the end; standard error, which leads nowhere
    SCMP_SYS(rt_sigaction),
    SCMP_SYS(rt_sigprocmask),
    SCMP_SYS(rt_sigreturn),
    SCMP_SYS(restart_syscall),
    SCMP_SYS(exit),
    SCMP_SYS(exit_group),
    SCMP_SYS(write),
    SCMP_SYS(writev),
};

constexpr int kFatalCalls[] = {
    SCMP_SYS(execve),
    SCMP_SYS(execveat),
    SCMP_SYS(ptrace),
    SCMP_SYS(socket),
    SCMP_SYS(connect),
    SCMP_SYS(bind),
    SCMP_SYS(listen),
    SCMP_SYS(mount),
    SCMP_SYS(umount2),
    SCMP_SYS(unshare),
    SCMP_SYS(setns),
    SCMP_SYS(bpf),
    SCMP_SYS(io_uring_setup),
    SCMP_SYS(keyctl),
    SCMP_SYS(perf_event_open),
    SCMP_SYS(userfaultfd),
    SCMP_SYS(process_vm_readv),
    SCMP_SYS(process_vm_writev),
    SCMP_SYS(init_module),
    SCMP_SYS(finit_module),
    SCMP_SYS(kexec_load),
    SCMP_SYS(reboot),
    SCMP_SYS(pivot_root),
    SCMP_SYS(chroot),
    SCMP_SYS(swapon),
};
#endif

bool closeSystemCalls() {
#ifdef KOLUM_SANITIZED
  return false;  // sanitizers make calls of their own
#else
  Filter filter;
  for (const int call : kAllowedCalls) filter.allow(call);
  for (const int call : kFatalCalls) filter.kill(call);
  // No code is loaded any more.
  filter.allow(SCMP_SYS(mmap), SCMP_A2(SCMP_CMP_MASKED_EQ, PROT_EXEC, 0));
  filter.allow(SCMP_SYS(mprotect), SCMP_A2(SCMP_CMP_MASKED_EQ, PROT_EXEC, 0));
  filter.allow(SCMP_SYS(fcntl), SCMP_A1(SCMP_CMP_EQ, F_GETFL));
  filter.allow(SCMP_SYS(fcntl), SCMP_A1(SCMP_CMP_EQ, F_GETFD));
  // These concern the process itself.
  filter.allow(SCMP_SYS(sched_getaffinity), SCMP_A0(SCMP_CMP_EQ, 0));
  filter.allow(SCMP_SYS(sched_setaffinity), SCMP_A0(SCMP_CMP_EQ, 0));
  filter.allow(SCMP_SYS(tgkill), SCMP_A0(SCMP_CMP_EQ, static_cast<scmp_datum_t>(getpid())));
  filter.allow(SCMP_SYS(prlimit64), SCMP_A0(SCMP_CMP_EQ, 0));
  filter.allow(SCMP_SYS(setrlimit));
  return filter.load();
#endif
}

}  // namespace

}  // namespace kolum::isolation

#ifndef KOLUM_SANITIZED
// Stands in for the C library's function, which asks by newfstatat(): that takes names, too, and a
// filter of system calls cannot look into them.
extern "C" int fstat(int descriptor, struct stat* status) noexcept {
  return static_cast<int>(syscall(SYS_fstat, descriptor, status));
}

// The same for a function by which Exiv2 looks for the user's settings: no user's settings decide
// on an answer, and the C library would ask a daemon over a socket, which ends a worker.
extern "C" struct passwd* getpwuid(uid_t /*user*/) {
  return nullptr;
}
#endif

namespace kolum::isolation {

std::uint32_t dropPrivileges() {
  const bool isLocked = prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0;
  const bool wasRoot = geteuid() == 0;
  const bool isNobody = wasRoot && becomeNobody();
  const bool isUnprivileged = dropCapabilities() && (!wasRoot || isNobody);
  return layerIf(isLocked, kNoNewPrivileges) | layerIf(isUnprivileged, kUnprivileged);
}

std::uint32_t enterSandbox(std::size_t memory) {
  // In this order: each needs what a later one takes away.
  const bool isNotDumpable = prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) == 0;
  const bool hasLimits = setLimits(memory);
  const bool isClosed = closeFileSystem();
  const bool isFiltered = closeSystemCalls();
  return layerIf(isNotDumpable, kNotDumpable) | layerIf(hasLimits, kLimits) |
         layerIf(isClosed, kFileSystemClosed) | layerIf(isFiltered, kSystemCalls);
}

std::chrono::seconds usedProcessorTime() {
  rusage used = {};
  getrusage(RUSAGE_SELF, &used);
  // One more for each part, because they are rounded down.
  return std::chrono::seconds(used.ru_utime.tv_sec + used.ru_stime.tv_sec + 2);
}

void limitProcessorTime(std::chrono::seconds time) {
  rlimit value = {};
  getrlimit(RLIMIT_CPU, &value);
  value.rlim_cur = static_cast<rlim_t>((usedProcessorTime() + time).count());
  setrlimit(RLIMIT_CPU, &value);
}

}  // namespace kolum::isolation
