#include <fcntl.h>
#include <kolum/frame.h>
#include <semaphore.h>

#include <cerrno>
#include <cstring>
#include <ctime>

extern "C" {
char* g_localWorkingPath = nullptr;
}

namespace {

constexpr char kDefaultWorkingPath[] = "/usr/local/medialibrary/bin/";
constexpr char kChangeName[] = "KOLUMS";
constexpr char kStopName[] = "KOLUMSSTOP";
constexpr mode_t kEveryProcess = 0777;
constexpr int kCallsPerPost = 20;  // that only count, before the one that posts

sem_t* g_KoLUMMutex = nullptr;
sem_t* g_KoLUMStopMutex = nullptr;
int g_initialised = 0;
int g_lazyCount = 0;

// Failure is told from a null handle and not from SEM_FAILED: wanted, callers rely on 0 and 1 only.
bool openChannel(sem_t*& channel, const char* name) {
  channel = sem_open(name, O_CREAT, kEveryProcess, 0);
  return channel != nullptr;
}

// What CALL on a channel returns; a channel that is not open fails like an invalid one.
template <typename Call>
int onChannel(sem_t* channel, const Call& call) {
  if (channel != nullptr) return call(channel);
  errno = EINVAL;
  return -1;
}

int closeChannel(sem_t*& channel) {
  const int result = onChannel(channel, sem_close);
  channel = nullptr;
  return result;
}

int drain(sem_t* channel) {
  int result = 0;
  while (result == 0) result = onChannel(channel, sem_trywait);
  return result;
}

int waitUntil(sem_t* channel, const timespec& deadline) {
  return onChannel(channel, [&](sem_t* open) { return sem_timedwait(open, &deadline); });
}

}  // namespace

extern "C" int KoLUM_Init(const char* workingPath) {
  if (g_initialised == 1) return 0;
  // The copy of an earlier call that failed stays: somebody may hold the pointer.
  char* path = strdup(workingPath != nullptr ? workingPath : kDefaultWorkingPath);
  if (path == nullptr) return 1;
  g_localWorkingPath = path;
  if (!openChannel(g_KoLUMMutex, kChangeName)) return 1;
  if (!openChannel(g_KoLUMStopMutex, kStopName)) return 1;
  g_initialised = 1;
  return 0;
}

extern "C" int KoLUM_UnInit(void) {
  closeChannel(g_KoLUMMutex);
  return closeChannel(g_KoLUMStopMutex);
}

extern "C" int KoLUM_Notification(void) {
  return onChannel(g_KoLUMMutex, sem_post);
}

extern "C" int KoLUM_StopNotification(void) {
  return onChannel(g_KoLUMStopMutex, sem_post);
}

extern "C" int KoLUM_LazyNotification(void) {
  if (g_lazyCount < kCallsPerPost) return ++g_lazyCount;
  g_lazyCount = 0;
  return KoLUM_Notification();
}

extern "C" int KoLUM_WaitNotification(void) {
  return onChannel(g_KoLUMMutex, sem_wait);
}

// The two timed waits differ in clock, in what a signal does and in the code for other errors:
// wanted, their callers depend on each as it is.
extern "C" int KoLUM_TimedWaitNotification(int seconds) {
  timespec deadline = {};
  if (clock_gettime(CLOCK_REALTIME, &deadline) != 0) {
    KoLUM_WaitNotification();
    return 0;
  }
  deadline.tv_sec += seconds;
  if (waitUntil(g_KoLUMMutex, deadline) == 0) return 0;
  return errno == ETIMEDOUT ? 1 : -1;
}

extern "C" int KoLUM_WaitStopNotification(void) {
  return onChannel(g_KoLUMStopMutex, sem_wait);
}

extern "C" int KoLUM_WaitStopNotificationTimeOut(int seconds) {
  const timespec deadline = {std::time(nullptr) + seconds, 0};
  int result = 0;
  do {
    result = waitUntil(g_KoLUMStopMutex, deadline);
  } while (result != 0 && errno == EINTR);
  if (result == 0) return 0;
  return errno == ETIMEDOUT ? 1 : 2;
}

extern "C" int KoLUM_ClearNotification(void) {
  return drain(g_KoLUMMutex);
}

extern "C" int KoLUM_ClearStopNotification(void) {
  return drain(g_KoLUMStopMutex);
}
