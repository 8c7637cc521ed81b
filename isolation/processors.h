// Where a call and its worker run: both on one processor. A thread that sleeps until its worker
// answers leaves its processor free, awake and with warm caches; on another one, which has to be
// woken first, the same work takes up to twice as long.
#ifndef KOLUM_ISOLATION_PROCESSORS_H
#define KOLUM_ISOLATION_PROCESSORS_H

#include <sched.h>

#include <array>
#include <cstdint>
#include <mutex>

namespace kolum::isolation {

class Processors {
 public:
  // Keeps the calling thread on a processor as long as it exists.
  class Seat {
   public:
    explicit Seat(Processors& all);
    ~Seat();
    Seat(const Seat&) = delete;
    Seat& operator=(const Seat&) = delete;
    // The number of the processor; not one of any if threads cannot be kept.
    std::uint32_t number() const { return number_; }

   private:
    Processors& all_;
    cpu_set_t before_ = {};
    std::uint32_t number_ = UINT32_MAX;
  };

 private:
  std::uint32_t take(const cpu_set_t& allowed);
  void giveBack(std::uint32_t number);

  std::mutex mutex_;
  std::array<int, CPU_SETSIZE> calls_ = {};
};

}  // namespace kolum::isolation

#endif
