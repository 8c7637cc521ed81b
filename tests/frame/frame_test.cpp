// Notifications are machine-wide, so every test runs in a sandbox with its own /dev/shm.
#include <gtest/gtest.h>
#include <kolum/frame.h>
#include <pthread.h>
#include <semaphore.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <functional>
#include <string>
#include <thread>

#include "support/appliance_sandbox.h"

using kolum::test::runInAppliance;
using kolum::test::sandboxUnavailable;
using Clock = std::chrono::steady_clock;

namespace {

void inSandbox(const std::function<void()>& body) {
  if (const auto why = sandboxUnavailable()) GTEST_SKIP() << *why;
  runInAppliance(body);
}

void initialised(const std::function<void()>& body) {
  inSandbox([&] {
    ASSERT_EQ(KoLUM_Init("/tools/"), 0);
    body();
  });
}

// The value of a named semaphore as seen by another process.
int valueOf(const char* name) {
  sem_t* semaphore = sem_open(name, 0);
  if (semaphore == SEM_FAILED) return -1;
  int value = -1;
  sem_getvalue(semaphore, &value);
  sem_close(semaphore);
  return value;
}

double secondsOf(const std::function<void()>& body) {
  const auto begin = Clock::now();
  body();
  return std::chrono::duration<double>(Clock::now() - begin).count();
}

// Interrupts this thread's system calls a few times while BODY runs.
void withSignals(const std::function<void()>& body) {
  struct sigaction action = {};
  action.sa_handler = [](int) {};
  sigaction(SIGUSR1, &action, nullptr);
  const pthread_t self = pthread_self();
  std::thread sender([self] {
    for (int i = 0; i < 3; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
      pthread_kill(self, SIGUSR1);
    }
  });
  body();
  sender.join();
}

TEST(Init, UsesDefaultWorkingPathForNull) {
  inSandbox([] {
    EXPECT_EQ(g_localWorkingPath, nullptr);
    EXPECT_EQ(KoLUM_Init(nullptr), 0);
    EXPECT_STREQ(g_localWorkingPath, "/usr/local/medialibrary/bin/");
  });
}

TEST(Init, KeepsACopyOfTheFirstWorkingPath) {
  inSandbox([] {
    std::string path = "/first/";
    EXPECT_EQ(KoLUM_Init(path.c_str()), 0);
    path = "/changed";
    EXPECT_STREQ(g_localWorkingPath, "/first/");
    EXPECT_EQ(KoLUM_Init("/second/"), 0);
    EXPECT_STREQ(g_localWorkingPath, "/first/");
    EXPECT_EQ(KoLUM_Init(nullptr), 0);
    EXPECT_STREQ(g_localWorkingPath, "/first/");
  });
}

TEST(Init, AcceptsWorkingPathOfAnyLength) {
  inSandbox([] {
    const std::string path(100'000, 'x');
    EXPECT_EQ(KoLUM_Init(path.c_str()), 0);
    EXPECT_EQ(g_localWorkingPath, path);
  });
}

TEST(Init, CreatesBothSemaphoresWithoutPosts) {
  initialised([] {
    EXPECT_EQ(valueOf("KOLUMS"), 0);
    EXPECT_EQ(valueOf("KOLUMSSTOP"), 0);
  });
}

TEST(Init, OpensBothSemaphoresToEveryUser) {
  inSandbox([] {
    umask(0);
    ASSERT_EQ(KoLUM_Init(nullptr), 0);
    for (const char* file : {"/dev/shm/sem.KOLUMS", "/dev/shm/sem.KOLUMSSTOP"}) {
      struct stat status = {};
      ASSERT_EQ(stat(file, &status), 0) << file;
      EXPECT_EQ(status.st_mode & 07777U, 0777U) << file;
    }
  });
}

TEST(Init, OpensNoStopSemaphoreIfTheChangeSemaphoreFails) {
  inSandbox([] {
    ASSERT_EQ(mkdir("/dev/shm/sem.KOLUMS", 0700), 0);
    EXPECT_EQ(KoLUM_Init("/first/"), 1);
    EXPECT_STREQ(g_localWorkingPath, "/first/");
    EXPECT_EQ(valueOf("KOLUMSSTOP"), -1);
  });
}

TEST(Init, FailsIfASemaphoreCannotBeOpenedAndCanBeRepeated) {
  inSandbox([] {
    // A folder in place of the semaphore's file.
    ASSERT_EQ(mkdir("/dev/shm/sem.KOLUMSSTOP", 0700), 0);
    EXPECT_EQ(KoLUM_Init("/first/"), 1);
    EXPECT_STREQ(g_localWorkingPath, "/first/");
    // The library never frees this copy, because a caller may hold the pointer. The static variable
    // keeps the leak checker from reporting it.
    static const char* const kept = g_localWorkingPath;
    ASSERT_EQ(rmdir("/dev/shm/sem.KOLUMSSTOP"), 0);
    EXPECT_EQ(KoLUM_Init("/second/"), 0);
    EXPECT_STREQ(g_localWorkingPath, "/second/");
    EXPECT_STREQ(kept, "/first/");
  });
}

TEST(UnInit, ClosesSemaphoresForGoodWithoutRemovingThem) {
  initialised([] {
    EXPECT_EQ(KoLUM_Notification(), 0);
    EXPECT_EQ(KoLUM_UnInit(), 0);
    EXPECT_EQ(valueOf("KOLUMS"), 1);
    EXPECT_STREQ(g_localWorkingPath, "/tools/");
    EXPECT_EQ(KoLUM_Init("/again/"), 0);
    EXPECT_STREQ(g_localWorkingPath, "/tools/");
    EXPECT_EQ(KoLUM_Notification(), -1) << "nothing was reopened";
    EXPECT_EQ(KoLUM_UnInit(), -1) << "already closed";
  });
}

TEST(Notifications, FailWithoutInitialisation) {
  inSandbox([] {
    const std::function<int()> calls[] = {
        KoLUM_Notification,
        KoLUM_StopNotification,
        KoLUM_WaitNotification,
        KoLUM_WaitStopNotification,
        KoLUM_ClearNotification,
        KoLUM_ClearStopNotification,
        KoLUM_UnInit,
        [] { return KoLUM_TimedWaitNotification(1); },
    };
    for (const auto& call : calls) {
      errno = 0;
      EXPECT_EQ(call(), -1);
      EXPECT_EQ(errno, EINVAL);
    }
    EXPECT_EQ(KoLUM_WaitStopNotificationTimeOut(1), 2);
  });
}

TEST(Notifications, PostTheirOwnSemaphore) {
  initialised([] {
    EXPECT_EQ(KoLUM_Notification(), 0);
    EXPECT_EQ(KoLUM_Notification(), 0);
    EXPECT_EQ(KoLUM_StopNotification(), 0);
    EXPECT_EQ(valueOf("KOLUMS"), 2);
    EXPECT_EQ(valueOf("KOLUMSSTOP"), 1);
    EXPECT_EQ(KoLUM_WaitNotification(), 0);
    EXPECT_EQ(KoLUM_WaitStopNotification(), 0);
    EXPECT_EQ(valueOf("KOLUMS"), 1);
    EXPECT_EQ(valueOf("KOLUMSSTOP"), 0);
  });
}

TEST(Notifications, WakeAnotherProcess) {
  initialised([] {
    const pid_t child = fork();
    if (child == 0) _exit(KoLUM_WaitNotification() == 0 ? 42 : 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(KoLUM_Notification(), 0);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 42);
  });
}

TEST(Notifications, ReachProcessesThatOpenedTheChannelsThemselves) {
  inSandbox([] {
    // Forked before the initialisation, so the two share only the names.
    const pid_t waiter = fork();
    if (waiter == 0) {
      if (KoLUM_Init("/waiter/") != 0) _exit(1);
      if (KoLUM_StopNotification() != 0) _exit(2);
      _exit(KoLUM_TimedWaitNotification(10) == 0 ? 42 : 3);
    }
    ASSERT_EQ(KoLUM_Init("/poster/"), 0);
    EXPECT_EQ(KoLUM_WaitStopNotificationTimeOut(10), 0) << "the waiter has started";
    EXPECT_EQ(KoLUM_Notification(), 0);
    int status = 0;
    waitpid(waiter, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 42);
    EXPECT_STREQ(g_localWorkingPath, "/poster/");
  });
}

TEST(UnboundedWaits, EndAtASignal) {
  initialised([] {
    withSignals([] {
      EXPECT_EQ(KoLUM_WaitNotification(), -1);
      EXPECT_EQ(errno, EINTR);
      EXPECT_EQ(KoLUM_WaitStopNotification(), -1);
      EXPECT_EQ(errno, EINTR);
    });
  });
}

TEST(LazyNotification, ReturnsTheFailureOfItsPostAndStartsOver) {
  inSandbox([] {
    for (int call = 1; call <= 20; ++call) EXPECT_EQ(KoLUM_LazyNotification(), call);
    EXPECT_EQ(KoLUM_LazyNotification(), -1) << "nothing is open";
    EXPECT_EQ(KoLUM_LazyNotification(), 1);
  });
}

TEST(LazyNotification, PostsOnEvery21stCall) {
  initialised([] {
    for (int round = 1; round <= 3; ++round) {
      for (int call = 1; call <= 20; ++call) EXPECT_EQ(KoLUM_LazyNotification(), call);
      EXPECT_EQ(valueOf("KOLUMS"), round - 1);
      EXPECT_EQ(KoLUM_LazyNotification(), 0);
      EXPECT_EQ(valueOf("KOLUMS"), round);
    }
    EXPECT_EQ(KoLUM_LazyNotification(), 1);
  });
}

TEST(TimedWaitNotification, DistinguishesPostFromTimeout) {
  initialised([] {
    EXPECT_EQ(KoLUM_TimedWaitNotification(0), 1);
    EXPECT_EQ(KoLUM_TimedWaitNotification(-5), 1);
    EXPECT_GE(secondsOf([] { EXPECT_EQ(KoLUM_TimedWaitNotification(1), 1); }), 0.99);
    KoLUM_Notification();
    EXPECT_EQ(KoLUM_TimedWaitNotification(0), 0);
  });
}

// Schedulers wake waiting processes with signals, so the wait is not resumed.
TEST(TimedWaitNotification, EndsAtASignal) {
  initialised([] {
    withSignals([] {
      EXPECT_LT(secondsOf([] { EXPECT_EQ(KoLUM_TimedWaitNotification(5), -1); }), 2);
      EXPECT_EQ(errno, EINTR);
    });
  });
}

TEST(WaitStopNotificationTimeOut, DistinguishesPostFromTimeout) {
  initialised([] {
    EXPECT_EQ(KoLUM_WaitStopNotificationTimeOut(0), 1);
    EXPECT_EQ(KoLUM_WaitStopNotificationTimeOut(-5), 1);
    // Whole seconds: the wait may end up to one second early.
    const double waited = secondsOf([] { EXPECT_EQ(KoLUM_WaitStopNotificationTimeOut(2), 1); });
    EXPECT_GE(waited, 0.99);
    EXPECT_LE(waited, 3);
    KoLUM_StopNotification();
    EXPECT_EQ(KoLUM_WaitStopNotificationTimeOut(0), 0);
  });
}

TEST(WaitStopNotificationTimeOut, CountsWholeClockSeconds) {
  initialised([] {
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    const std::chrono::nanoseconds second = std::chrono::seconds(1);
    std::this_thread::sleep_for(second - std::chrono::nanoseconds(now.tv_nsec) + second / 2);
    EXPECT_LT(secondsOf([] { EXPECT_EQ(KoLUM_WaitStopNotificationTimeOut(1), 1); }), 0.9);
  });
}

TEST(WaitStopNotificationTimeOut, ContinuesAfterASignal) {
  initialised([] {
    withSignals([] {
      EXPECT_GE(secondsOf([] { EXPECT_EQ(KoLUM_WaitStopNotificationTimeOut(2), 1); }), 0.99);
    });
  });
}

TEST(TimedWaits, EndAtOnceForTimesInThePast) {
  initialised([] {
    EXPECT_EQ(KoLUM_TimedWaitNotification(INT32_MIN), 1);
    EXPECT_EQ(KoLUM_WaitStopNotificationTimeOut(INT32_MIN), 1);
  });
}

TEST(ClearNotification, DiscardsAllPosts) {
  initialised([] {
    for (int i = 0; i < 3; ++i) KoLUM_Notification();
    KoLUM_StopNotification();
    EXPECT_EQ(KoLUM_ClearNotification(), -1);
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_EQ(valueOf("KOLUMS"), 0);
    EXPECT_EQ(valueOf("KOLUMSSTOP"), 1);
    EXPECT_EQ(KoLUM_ClearStopNotification(), -1);
    EXPECT_EQ(valueOf("KOLUMSSTOP"), 0);
    EXPECT_EQ(KoLUM_ClearNotification(), -1) << "nothing to discard";
  });
}

}  // namespace
