#include "scan/crew.h"

#include <signal.h>

#include <thread>
#include <utility>

namespace kolum::scan {

namespace {

// Threads inherit the mask of the one that starts them.
class BlockedSignals {
 public:
  BlockedSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  BlockedSignals(const BlockedSignals&) = delete;
  BlockedSignals& operator=(const BlockedSignals&) = delete;

 private:
  sigset_t before_;
};

}  // namespace

void Crew::start(std::function<void()> work) {
  const BlockedSignals blocked;
  // Counted first: the thread may end before this function does.
  {
    const std::lock_guard lock(state_->mutex);
    ++state_->count;
  }
  const auto leave = [](State& state) {
    const std::lock_guard lock(state.mutex);
    --state.count;
    state.ended.notify_all();
  };
  try {
    std::thread([state = state_, work = std::move(work), leave]() mutable {
      try {
        work();
      } catch (...) {
        const std::lock_guard lock(state->mutex);
        state->error = std::current_exception();
      }
      work = nullptr;  // what it owned is gone before anyone stops waiting for it
      leave(*state);
    }).detach();
  } catch (...) {
    leave(*state_);
    throw;
  }
}

bool Crew::waitUntil(std::chrono::steady_clock::time_point deadline) {
  std::unique_lock lock(state_->mutex);
  return state_->ended.wait_until(lock, deadline, [&] { return state_->count == 0; });
}

void Crew::rethrow() const {
  const std::lock_guard lock(state_->mutex);
  if (state_->error != nullptr) std::rethrow_exception(state_->error);
}

std::size_t Crew::size() const {
  const std::lock_guard lock(state_->mutex);
  return state_->count;
}

}  // namespace kolum::scan
