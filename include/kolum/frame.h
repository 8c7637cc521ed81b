/*
 * Library frame: the working path, and the notifications by which processes wake and stop each
 * other.
 *
 * Notifications are two POSIX named semaphores, "KOLUMS" (changes) and "KOLUMSSTOP" (stop), shared
 * by all processes on the machine that have called KoLUM_Init. A process must initialise before its
 * threads use the library; all other functions except KoLUM_LazyNotification may then be called
 * from any thread. Before KoLUM_Init and after KoLUM_UnInit every use of a semaphore fails as it
 * would on an invalid one: with -1 (KoLUM_WaitStopNotificationTimeOut: 2), and EINVAL in errno.
 */
#ifndef KOLUM_FRAME_H
#define KOLUM_FRAME_H

#include <kolum/export.h>

/* The results of waits with a time limit. */
enum {
  NOTIFICATION_FAILED = -1, /* of KoLUM_TimedWaitNotification */
  NOTIFICATION_RECEIVED = 0,
  NOTIFICATION_TIMED_OUT = 1,
  NOTIFICATION_STOP_FAILED = 2 /* of KoLUM_WaitStopNotificationTimeOut */
};

KOLUM_C_BEGIN

/*
 * The folder of the media library's tools, as given to KoLUM_Init; null before. It is prepended to
 * tools' names unchanged, so it must end with "/". Owned by the library and never freed.
 */
KOLUM_EXPORT extern char* g_localWorkingPath;

/*
 * Stores the working path (null: "/usr/local/medialibrary/bin/") and opens or creates both
 * semaphores. Returns 0 on success, and immediately if the process is initialised already: a second
 * working path is ignored. Returns 1 when a semaphore cannot be opened; the working path is set
 * then, and the call may be repeated.
 */
KOLUM_EXPORT int KoLUM_Init(const char* workingPath);

/*
 * Closes both semaphores, which continue to exist for other processes. Returns the result of
 * closing the stop semaphore: 0, or -1 with errno. This is final: a later KoLUM_Init returns 0 and
 * opens nothing.
 */
KOLUM_EXPORT int KoLUM_UnInit(void);

/* Posts the change semaphore. Returns 0, or -1 with errno. */
KOLUM_EXPORT int KoLUM_Notification(void);

/* Posts the stop semaphore. Returns 0, or -1 with errno. */
KOLUM_EXPORT int KoLUM_StopNotification(void);

/*
 * Posts the change semaphore on every 21st call. Returns the number of calls since the last post (1
 * to 20), or the post's result when it posts. The count belongs to the process and has no lock:
 * threads must take turns.
 */
KOLUM_EXPORT int KoLUM_LazyNotification(void);

/* Waits for a post of the change semaphore, without a time limit. Returns 0, or -1 with errno. */
KOLUM_EXPORT int KoLUM_WaitNotification(void);

/*
 * Waits at most SECONDS seconds for a post of the change semaphore. Returns NOTIFICATION_RECEIVED,
 * NOTIFICATION_TIMED_OUT, or NOTIFICATION_FAILED on any other failure, which includes an
 * interruption by a signal.
 */
KOLUM_EXPORT int KoLUM_TimedWaitNotification(int seconds);

/* Waits for a post of the stop semaphore, without a time limit. Returns 0, or -1 with errno. */
KOLUM_EXPORT int KoLUM_WaitStopNotification(void);

/*
 * Waits at most SECONDS seconds for a post of the stop semaphore; signals do not end the wait.
 * Returns NOTIFICATION_RECEIVED, NOTIFICATION_TIMED_OUT, or NOTIFICATION_STOP_FAILED on any other
 * failure.
 */
KOLUM_EXPORT int KoLUM_WaitStopNotificationTimeOut(int seconds);

/* Removes all posts from the change semaphore. Returns -1, the result of finding none left. */
KOLUM_EXPORT int KoLUM_ClearNotification(void);

/* Removes all posts from the stop semaphore. Returns -1, the result of finding none left. */
KOLUM_EXPORT int KoLUM_ClearStopNotification(void);

KOLUM_C_END

#endif
