#include "terminal/interruption.h"

#include <poll.h>

#include <cerrno>
#include <csignal>
#include <cstddef>

namespace kolum::tool {

namespace {

constexpr std::array<int, 2> kSignals = {SIGINT, SIGTERM};

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

void waitForInput(int descriptor) {
  // Blocked until ppoll() waits, so that no signal is lost between the check and the wait.
  sigset_t blocked;
  sigset_t before;
  sigemptyset(&blocked);
  for (const int signal : kSignals) sigaddset(&blocked, signal);
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  pollfd input = {descriptor, POLLIN, 0};
  int ready = 0;
  while (ready <= 0 && g_signal == 0) {
    ready = ppoll(&input, 1, nullptr, &before);
    if (ready < 0 && errno != EINTR) break;
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  Interruption::check();
}

}  // namespace kolum::tool
