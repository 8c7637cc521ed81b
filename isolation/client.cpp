#include "isolation/client.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "base/spawn.h"
#include "isolation/program.h"

namespace kolum::isolation {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Loading some hundred libraries from a disk that sleeps.
constexpr std::chrono::seconds kStartTime{30};
// A killed process is gone in microseconds, unless a device holds it. With the memory that
// sanitizers take, it may need seconds.
#ifdef KOLUM_SANITIZED
constexpr milliseconds kDeathTime{10'000};
#else
constexpr milliseconds kDeathTime{500};
#endif
// Workers that no kill ends: more would mean that the machine is running full of them.
constexpr std::size_t kMostStuck = 16;
// More than this many at rest are of no use to a host that probes in a few threads.
constexpr std::size_t kMostIdle = 16;

// --- Starting the nursery

// All that the worker gets of the host's environment: where libraries are, and how sanitizers are
// set up.
constexpr const char* kPassedVariables[] = {"LD_LIBRARY_PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS",
                                            "LSAN_OPTIONS"};

std::vector<std::string> passedEnvironment() {
  std::vector<std::string> passed;
  for (const char* name : kPassedVariables)
    if (const char* value = secure_getenv(name)) passed.push_back(std::string(name) + "=" + value);
  return passed;
}

// The socket becomes descriptor 0; all others are closed but standard error, where sanitizers
// report.
pid_t startNursery(const std::string& program, int socket, const Settings& settings) {
  SpawnActions actions;
  posix_spawn_file_actions_adddup2(&actions.value, socket, STDIN_FILENO);
  posix_spawn_file_actions_addopen(&actions.value, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addclosefrom_np(&actions.value, STDERR_FILENO + 1);
  return spawn({program, std::to_string(settings.memory), settings.isIdle ? "idle" : "normal"},
               actions, {.hasDefaultSignals = true, .environment = passedEnvironment()});
}

std::string withErrno(const char* what) {
  return std::string(what) + ": " + std::strerror(errno);
}

// --- Reasons

std::string signalText(int number) {
  const char* text = sigdescr_np(number);
  return text != nullptr ? text : "signal " + std::to_string(number);
}

read::Failure failureOfEnd(const std::optional<siginfo_t>& end) {
  using read::FailureCause;
  if (!end || end->si_code == CLD_EXITED) return {FailureCause::kCrashed, "its reader ended"};
  const int number = end->si_status;
  if (number == SIGXCPU) return {FailureCause::kTimeOver, "it takes too much processor time"};
  if (number == SIGKILL) return {FailureCause::kCrashed, "its reader was killed"};
  if (number == SIGSYS) return {FailureCause::kCrashed, "its reader made a forbidden system call"};
  return {FailureCause::kCrashed, "its reader crashed: " + signalText(number)};
}

// Waits only for what is not stuck.
void end(Worker& worker) {
  worker.process.kill();
  worker.process.waitUntil(Clock::now() + kDeathTime);
}

std::string lastPart(std::string_view path) {
  return std::string(path.substr(path.rfind('/') + 1));
}

read::Findings failed(read::Failure failure) {
  read::Findings findings;
  findings.failure = std::move(failure);
  return findings;
}

// The only failure that a worker reports is that its memory ran out. The words are the host's: they
// go into its log.
read::Findings believed(std::optional<read::Findings> findings) {
  using read::FailureCause;
  if (!findings || (findings->failure && findings->failure->cause != FailureCause::kOutOfMemory))
    return failed({FailureCause::kInvalidAnswer, "its reader answers nonsense"});
  if (findings->failure)
    return failed({FailureCause::kOutOfMemory, "it takes too much memory to read"});
  return std::move(*findings);
}

}  // namespace

// --- Processes

Process::Process(pid_t id) : id_(id), handle_(static_cast<int>(syscall(SYS_pidfd_open, id, 0))) {}

void Process::kill() const {
  if (handle_.isOpen())
    syscall(SYS_pidfd_send_signal, handle_.get(), SIGKILL, nullptr, 0);
  else
    ::kill(id_, SIGKILL);
}

// By the handle: if another part of the host has taken the status, the number may by now belong to
// another of its children.
bool Process::reap() {
  siginfo_t info = {};
  const int waited =
      handle_.isOpen() ? waitid(P_PIDFD, static_cast<id_t>(handle_.get()), &info, WEXITED | WNOHANG)
                       : waitid(P_PID, static_cast<id_t>(id_), &info, WEXITED | WNOHANG);
  if (waited != 0) return errno == ECHILD;
  if (info.si_pid == 0) return false;
  end_ = info;
  return true;
}

bool Process::waitUntil(Clock::time_point deadline) {
  while (true) {
    if (reap()) return true;
    const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
    if (left.count() <= 0) return false;
    pollfd wait = {handle_.get(), POLLIN, 0};
    // Without a handle, on old kernels, it is asked again and again.
    poll(&wait, 1, handle_.isOpen() ? static_cast<int>(left.count()) : 1);
  }
}

// --- The nursery

Nursery::Nursery(Process process, Descriptor socket)
    : process_(std::move(process)), socket_(std::move(socket)) {}

Nursery::~Nursery() {
  socket_.reset();
  process_.kill();
  process_.waitUntil(Clock::now() + kDeathTime);
}

std::unique_ptr<Nursery> Nursery::start(const Settings& settings, std::string& why) {
  const auto program = settings.worker.empty() ? workerProgram() : settings.worker;
  if (!program) {
    why = "the program kolum-worker is missing";
    return nullptr;
  }
  auto sockets = socketPair();
  const pid_t process = sockets ? startNursery(*program, sockets->theirs.get(), settings) : -1;
  if (process < 0) {
    why = withErrno(program->c_str());
    return nullptr;
  }
  return std::unique_ptr<Nursery>(new Nursery(Process(process), std::move(sockets->ours)));
}

// The nursery answers when it has loaded its libraries.
std::unique_ptr<Worker> Nursery::newWorker(std::string& why) {
  auto sockets = socketPair();
  if (!sockets) {
    why = withErrno("no socket for a worker");
    return nullptr;
  }
  const Deadline deadline = Clock::now() + kStartTime;
  constexpr std::uint8_t kAsk[] = {1};
  Birth birth = {};
  if (send(socket_.get(), kAsk, {}, sockets->theirs.get(), deadline) != Transfer::kDone ||
      receive(socket_.get(), writableBytesOf(birth), nullptr, deadline) != Transfer::kDone) {
    why = "kolum-worker does not answer";
    return nullptr;
  }
  sockets->theirs.reset();
  if (birth.process <= 0) {
    errno = birth.error;
    why = withErrno("no process for a worker");
    return nullptr;
  }
  auto worker = std::make_unique<Worker>(
      Worker{.process = Process(birth.process), .socket = std::move(sockets->ours)});
  Hello hello = {};
  if (receive(worker->socket.get(), writableBytesOf(hello), nullptr, deadline) != Transfer::kDone) {
    why = "a worker ended at once";
    end(*worker);
    return nullptr;
  }
  if (std::memcmp(hello.version, kVersion, sizeof kVersion) != 0) {
    why = "kolum-worker is of another version";
    end(*worker);
    return nullptr;
  }
  worker->layers = hello.layers;
  return worker;
}

// --- The client

Client::Client(const Settings& settings) : settings_(settings) {}

Client::~Client() {
  stop();
}

void Client::stop() {
  const std::lock_guard lock(mutex_);
  isStopped_ = true;
  for (const Worker* worker : busy_) worker->process.kill();
  for (const auto& worker : idle_) end(*worker);
  idle_.clear();
  // Whoever is starting a worker now ends it as soon as it is there.
  if (const std::unique_lock starting(startMutex_, std::try_to_lock); starting) nursery_.reset();
}

std::unique_ptr<Worker> Client::take(std::string& why) {
  {
    const std::lock_guard lock(mutex_);
    if (!mayStart(why)) return nullptr;
    if (!idle_.empty()) {
      // One that has worked here finds its caches warm.
      const auto here = static_cast<std::uint32_t>(sched_getcpu());
      const auto isHere = [&](const auto& worker) { return worker->processor == here; };
      const auto found = std::find_if(idle_.begin(), idle_.end(), isHere);
      std::swap(found == idle_.end() ? idle_.back() : *found, idle_.back());
      busy_.push_back(idle_.back().get());
      auto worker = std::move(idle_.back());
      idle_.pop_back();
      return worker;
    }
  }
  auto worker = newWorker(why);
  if (worker == nullptr) return nullptr;
  const std::lock_guard lock(mutex_);
  if (isStopped_) {
    why = "stopped";
    end(*worker);
    return nullptr;
  }
  busy_.push_back(worker.get());
  return worker;
}

bool Client::mayStart(std::string& why) {
  if (isStopped_) {
    why = "stopped";
    return false;
  }
  std::erase_if(stuck_, [](const auto& worker) { return worker->process.waitUntil(Clock::now()); });
  if (stuck_.size() < kMostStuck) return true;
  why = "too many readers wait for a device that does not answer";
  return false;
}

// A nursery that is gone is replaced once. Others go on meanwhile: a disk that sleeps may hold the
// program back for seconds.
std::unique_ptr<Worker> Client::newWorker(std::string& why) {
  const std::lock_guard starting(startMutex_);
  for (int i = 0; i < 2; ++i) {
    const bool isNew = nursery_ == nullptr;
    if (isNew) nursery_ = Nursery::start(settings_, why);
    if (nursery_ == nullptr) return nullptr;
    auto worker = nursery_->newWorker(why);
    if (worker != nullptr && settings_.mode == Mode::kStrict && worker->layers != kAllLayers) {
      why = "not all protections are available here";
      end(*worker);
      return nullptr;
    }
    if (worker != nullptr) return worker;
    nursery_.reset();
    if (isNew) return nullptr;
  }
  return nullptr;
}

void Client::forget(const Worker* worker) {
  std::erase(busy_, worker);
}

void Client::putBack(std::unique_ptr<Worker> worker) {
  const std::lock_guard lock(mutex_);
  forget(worker.get());
  if (!isStopped_ && idle_.size() < kMostIdle) {
    idle_.push_back(std::move(worker));
    return;
  }
  end(*worker);
}

// Ends a worker, or leaves it if that is impossible.
void Client::abandon(std::unique_ptr<Worker> worker) {
  worker->process.kill();
  const bool isGone = worker->process.waitUntil(Clock::now() + kDeathTime);
  const std::lock_guard lock(mutex_);
  forget(worker.get());
  if (!isGone) stuck_.push_back(std::move(worker));
}

// What is known about a worker that did not answer.
read::Failure Client::failureOf(Worker& worker, Transfer transfer) const {
  if (transfer == Transfer::kTimeOver) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(settings_.deadline);
    return {read::FailureCause::kTimeOver,
            "it takes longer than " + std::to_string(seconds.count()) + " s"};
  }
  worker.process.waitUntil(Clock::now() + kDeathTime);
  return failureOfEnd(worker.process.end());
}

read::Findings Client::look(const media::Source& source, const read::Query& query) {
  const auto request = encode(Request{lastPart(source.name()), query});
  // A worker may have ended while it was at rest, which says nothing about the file.
  for (std::size_t i = 0; i <= kMostIdle; ++i) {
    std::string why;
    auto worker = take(why);
    if (worker == nullptr) return failed({read::FailureCause::kNoReader, why});
    const Processors::Seat seat(processors_);
    worker->processor = seat.number();
    const Deadline deadline = Clock::now() + settings_.deadline;
    const Header header = {.number = ++worker->requests,
                           .size = static_cast<std::uint32_t>(request.size()),
                           .isLast = 0,
                           .processor = seat.number(),
                           .unused = 0};
    const Transfer sent =
        send(worker->socket.get(), bytesOf(header), request, source.descriptor(), deadline);
    if (sent == Transfer::kDone) return answerOf(std::move(worker), deadline);
    abandon(std::move(worker));
    if (sent == Transfer::kTimeOver) break;
  }
  return failed({read::FailureCause::kNoReader, "no worker takes a request"});
}

// If memory runs out here, the worker must not stay among those at work.
read::Findings Client::answerOf(std::unique_ptr<Worker> worker, Deadline deadline) try {
  const int socket = worker->socket.get();
  Header header = {};
  Transfer received = receive(socket, writableBytesOf(header), nullptr, deadline);
  const bool isHonest = header.number == worker->requests && header.size <= kLongestMessage;
  std::vector<std::uint8_t> bytes;
  if (received == Transfer::kDone && isHonest) {
    bytes.resize(header.size);
    received = receive(socket, bytes, nullptr, deadline);
  }
  if (received != Transfer::kDone) {
    read::Failure failure = failureOf(*worker, received);
    abandon(std::move(worker));
    return failed(std::move(failure));
  }
  read::Findings findings = believed(isHonest ? decodeFindings(bytes) : std::nullopt);
  if (!findings.failure && header.isLast == 0 && worker->requests < kMostRequests)
    putBack(std::move(worker));
  else
    abandon(std::move(worker));
  return findings;
} catch (...) {
  if (worker != nullptr) abandon(std::move(worker));
  throw;
}

std::optional<std::uint32_t> Client::activeLayers(std::string& why) {
  auto worker = take(why);
  if (worker == nullptr) return std::nullopt;
  const std::uint32_t layers = worker->layers;
  putBack(std::move(worker));
  return layers;
}

}  // namespace kolum::isolation
