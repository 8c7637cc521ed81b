#include "frame/notifications.h"

#include <fcntl.h>
#include <kolum/frame.h>
#include <semaphore.h>

#include <cerrno>
#include <ctime>

namespace kolum::frame {

namespace {

// A semaphore that all processes share by its name.
class NamedSemaphore {
 public:
  explicit NamedSemaphore(const char* name) : name_(name) {}

  bool open() {
    constexpr mode_t kEverybody = 0777;
    handle_ = sem_open(name_, O_CREAT, kEverybody, 0);
    return handle_ != nullptr;
  }

  int close() {
    const int result = valid() ? sem_close(handle_) : -1;
    handle_ = nullptr;
    return result;
  }

  int post() { return valid() ? sem_post(handle_) : -1; }
  int wait() { return valid() ? sem_wait(handle_) : -1; }
  int waitUntil(const timespec& deadline) {
    return valid() ? sem_timedwait(handle_, &deadline) : -1;
  }

  // Removes posts until none is left.
  int drain() {
    int result = 0;
    while (result == 0) result = valid() ? sem_trywait(handle_) : -1;
    return result;
  }

 private:
  bool valid() const {
    if (handle_ == nullptr) errno = EINVAL;
    return handle_ != nullptr;
  }

  const char* name_;
  sem_t* handle_ = nullptr;
};

NamedSemaphore changes("KOLUMS");
NamedSemaphore stops("KOLUMSSTOP");

}  // namespace

bool openChannels() {
  return changes.open() && stops.open();
}

int closeChannels() {
  changes.close();
  return stops.close();
}

int postChange() {
  return changes.post();
}

int postChangeLazily() {
  constexpr int kCallsWithoutPost = 20;
  static int calls = 0;
  if (calls < kCallsWithoutPost) return ++calls;
  calls = 0;
  return changes.post();
}

int waitForChange() {
  return changes.wait();
}

// The two timed waits differ: this one keeps the clock's nanoseconds and ends at a signal, so that
// a server can handle it.
int waitForChange(int seconds) {
  timespec deadline = {};
  if (clock_gettime(CLOCK_REALTIME, &deadline) != 0) {
    changes.wait();
    return NOTIFICATION_RECEIVED;
  }
  deadline.tv_sec += seconds;
  if (changes.waitUntil(deadline) == 0) return NOTIFICATION_RECEIVED;
  return errno == ETIMEDOUT ? NOTIFICATION_TIMED_OUT : NOTIFICATION_FAILED;
}

int clearChanges() {
  return changes.drain();
}

int postStop() {
  return stops.post();
}

int waitForStop() {
  return stops.wait();
}

int waitForStop(int seconds) {
  const timespec deadline = {.tv_sec = std::time(nullptr) + seconds, .tv_nsec = 0};
  int result = stops.waitUntil(deadline);
  while (result != 0 && errno == EINTR) result = stops.waitUntil(deadline);
  if (result == 0) return NOTIFICATION_RECEIVED;
  return errno == ETIMEDOUT ? NOTIFICATION_TIMED_OUT : NOTIFICATION_STOP_FAILED;
}

int clearStops() {
  return stops.drain();
}

}  // namespace kolum::frame
