#include "interruption.h"

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
    // A signal that the caller ignores (a job in the background) stays ignored.
    if (before_[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &note, nullptr);
  }
}

Interruption::~Interruption() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before_[i], nullptr);
}

void Interruption::check() const {
  if (g_signal != 0) throw Interrupted{g_signal};
}

}  // namespace kolum::tool
