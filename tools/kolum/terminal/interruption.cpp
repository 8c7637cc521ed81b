#include "terminal/interruption.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <ctime>

namespace kolum::tool {

namespace {

constexpr std::array<int, 3> kSignals = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t g_signal = 0;

}  // namespace

Interruption::Interruption() {
  struct sigaction note = {};
  note.sa_handler = [](int signal) { g_signal = signal; };
  note.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    sigaction(kSignals[i], nullptr, &before_[i]);
    // A signal that the caller ignores (as for a background job) stays ignored.
    if (before_[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &note, nullptr);
  }
}

Interruption::~Interruption() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before_[i], nullptr);
}

void Interruption::check() {
  if (g_signal != 0) throw Interrupted{g_signal};
}

bool Interruption::hasCome() {
  return g_signal != 0;
}

bool waitForInput(int descriptor, std::optional<std::chrono::milliseconds> limit) {
  // Blocked until ppoll() waits, so that no signal is lost between the check and the wait.
  sigset_t blocked;
  sigset_t before;
  sigemptyset(&blocked);
  for (const int signal : kSignals) sigaddset(&blocked, signal);
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  const auto milliseconds = std::max(limit.value_or(std::chrono::milliseconds(0)).count(),
                                     std::chrono::milliseconds::rep{0});
  const timespec time = {milliseconds / 1000, milliseconds % 1000 * 1000000};
  pollfd input = {descriptor, POLLIN, 0};
  int ready = -1;
  while (ready < 0 && g_signal == 0) {
    ready = ppoll(&input, 1, limit ? &time : nullptr, &before);
    if (ready < 0 && errno != EINTR) break;
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  Interruption::check();
  return ready != 0;
}

}  // namespace kolum::tool
