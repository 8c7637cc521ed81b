#include "isolation/processors.h"

namespace kolum::isolation {

Processors::Seat::Seat(Processors& all) : all_(all) {
  if (sched_getaffinity(0, sizeof before_, &before_) != 0) return;
  const std::uint32_t number = all_.take(before_);
  if (number >= CPU_SETSIZE) return;
  cpu_set_t only;
  CPU_ZERO(&only);
  CPU_SET(number, &only);
  if (sched_setaffinity(0, sizeof only, &only) == 0)
    number_ = number;
  else
    all_.giveBack(number);
}

Processors::Seat::~Seat() {
  if (number_ >= CPU_SETSIZE) return;
  sched_setaffinity(0, sizeof before_, &before_);
  all_.giveBack(number_);
}

// The one at hand, unless another call works there and not on all others, too.
std::uint32_t Processors::take(const cpu_set_t& allowed) {
  const std::lock_guard lock(mutex_);
  const int here = sched_getcpu();
  if (here < 0 || here >= CPU_SETSIZE) return UINT32_MAX;
  int chosen = here;
  for (int i = 0; calls_[static_cast<std::size_t>(chosen)] > 0 && i < CPU_SETSIZE; ++i)
    if (CPU_ISSET(i, &allowed) && calls_[static_cast<std::size_t>(i)] == 0) chosen = i;
  ++calls_[static_cast<std::size_t>(chosen)];
  return static_cast<std::uint32_t>(chosen);
}

void Processors::giveBack(std::uint32_t number) {
  const std::lock_guard lock(mutex_);
  --calls_[number];
}

}  // namespace kolum::isolation
