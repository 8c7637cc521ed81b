// How long processors have worked for this process. Unlike time by the clock, it does not grow with
// what else the machine does.
#ifndef KOLUM_TESTS_SUPPORT_PROCESSOR_TIME_H
#define KOLUM_TESTS_SUPPORT_PROCESSOR_TIME_H

#include <chrono>
#include <ctime>

namespace kolum::test {

inline std::chrono::nanoseconds processorTime() {
  timespec time = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

}  // namespace kolum::test

#endif
