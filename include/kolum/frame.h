/*
 * Library frame: the working path, and the notifications by which processes wake and stop each
 * other.
 *
 * Notifications are two POSIX named semaphores, "KOLUMS" (changes) and "KOLUMSSTOP" (stop), which
 * every process on the machine shares once it has called KoLUM_Init. A process initialises before
 * its threads use the library; the other functions, KoLUM_LazyNotification excepted, may then be
 * called from any thread. Before KoLUM_Init and after KoLUM_UnInit every use of a semaphore fails
 * as the call does on an invalid one: with -1 (KoLUM_WaitStopNotificationTimeOut: 2), and EINVAL in
 * errno.
 */
#ifndef KOLUM_FRAME_H
#define KOLUM_FRAME_H

#include <kolum/export.h>

/* What a wait for a notification with a bound came to. */
enum {
  NOTIFICATION_FAILED = -1, /* of KoLUM_TimedWaitNotification */
  NOTIFICATION_RECEIVED = 0,
  NOTIFICATION_TIMED_OUT = 1,
  NOTIFICATION_STOP_FAILED = 2 /* of KoLUM_WaitStopNotificationTimeOut */
};

KOLUM_C_BEGIN

/*
 * The folder of the media library's tools, as KoLUM_Init was given it; null before. Put in front of
 * tools' names as it stands, so it closes with "/". Owned by the library, kept for the life of the
 * process.
 */
KOLUM_EXPORT extern char* g_localWorkingPath;

/*
 * Stores the working path (null: "/usr/local/medialibrary/bin/") and opens or creates both
 * semaphores. Returns 0 on success, and at once when the process is initialised already: a second
 * working path is ignored. Returns 1 when a semaphore cannot be opened; the working path is set
 * then, and the call may be repeated.
 */
KOLUM_EXPORT int KoLUM_Init(const char* workingPath);

/*
 * Closes both semaphores, which go on to exist for other processes. Returns the result of closing
 * the stop semaphore: 0, or -1 with errno. There is no way back: a later KoLUM_Init returns 0 and
 * opens nothing.
 */
KOLUM_EXPORT int KoLUM_UnInit(void);

/* Posts the change semaphore. Returns 0, or -1 with errno. */
KOLUM_EXPORT int KoLUM_Notification(void);

/* Posts the stop semaphore. Returns 0, or -1 with errno. */
KOLUM_EXPORT int KoLUM_StopNotification(void);

/*
 * Posts the change semaphore on every 21st call. Returns the number of calls since the last post (1
 * to 20), or the post's result when it posts. The count is the process's, without a lock: threads
 * take turns.
 */
KOLUM_EXPORT int KoLUM_LazyNotification(void);

/* Waits for a post of the change semaphore, without a bound. Returns 0, or -1 with errno. */
KOLUM_EXPORT int KoLUM_WaitNotification(void);

/*
 * Waits at most so many seconds for a post of the change semaphore. Returns NOTIFICATION_RECEIVED,
 * NOTIFICATION_TIMED_OUT, or NOTIFICATION_FAILED on any other failure; a signal that interrupts the
 * wait is one.
 */
KOLUM_EXPORT int KoLUM_TimedWaitNotification(int seconds);

/* Waits for a post of the stop semaphore, without a bound. Returns 0, or -1 with errno. */
KOLUM_EXPORT int KoLUM_WaitStopNotification(void);

/*
 * Waits at most so many seconds for a post of the stop semaphore; signals do not end the wait.
 * Returns NOTIFICATION_RECEIVED, NOTIFICATION_TIMED_OUT, or NOTIFICATION_STOP_FAILED on any other
 * failure.
 */
KOLUM_EXPORT int KoLUM_WaitStopNotificationTimeOut(int seconds);

/* Takes all posts back from the change semaphore. Returns -1: the result of finding none left. */
KOLUM_EXPORT int KoLUM_ClearNotification(void);

/* Takes all posts back from the stop semaphore. Returns -1: the result of finding none left. */
KOLUM_EXPORT int KoLUM_ClearStopNotification(void);

KOLUM_C_END

#endif
