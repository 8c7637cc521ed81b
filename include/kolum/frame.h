/*
 * The library's start, and the two channels by which the media library's processes wake and stop
 * each other: an indexer posts a change, the server waits for it; a stop asks a waiter to finish.
 *
 * Call KoLUM_Init once, before other threads use the library. The channels are POSIX semaphores
 * named "KOLUMS" and "KOLUMSSTOP", so every process that initialises the library shares them; they
 * are never removed. Before KoLUM_Init and after KoLUM_UnInit every call on a channel fails with
 * EINVAL. After KoLUM_Init all of them may be called from any thread, but for
 * KoLUM_LazyNotification, whose counter has no lock.
 */
#ifndef KOLUM_FRAME_H
#define KOLUM_FRAME_H

#include <kolum/export.h>

KOLUM_C_BEGIN

/* The folder of the external tools with its closing "/", set by KoLUM_Init; null before. */
KOLUM_EXPORT extern char* g_localWorkingPath;

/*
 * Stores the folder of the external tools (WORKINGPATH with its closing "/", copied; null means
 * "/usr/local/medialibrary/bin/") and opens both channels. Returns 0 when that succeeded, and at
 * once, the first folder staying, when it has succeeded before. Returns 1 when a channel cannot be
 * opened or memory ran out; the call may then be repeated.
 */
KOLUM_EXPORT int KoLUM_Init(const char* workingPath);

/*
 * Closes both channels. The library still counts as initialised: KoLUM_Init does not open them
 * again. Returns the result of closing the stop channel, 0 or -1 with errno.
 */
KOLUM_EXPORT int KoLUM_UnInit(void);

/* Posts a change. Returns 0, or -1 with errno. */
KOLUM_EXPORT int KoLUM_Notification(void);

/* Posts a stop. Returns 0, or -1 with errno. */
KOLUM_EXPORT int KoLUM_StopNotification(void);

/*
 * Counts changes and posts every 21st: returns 1 to 20 for a call that only counted, else what the
 * post returned.
 */
KOLUM_EXPORT int KoLUM_LazyNotification(void);

/* Waits for a change without bound. Returns 0, or -1 with errno (EINTR after a signal). */
KOLUM_EXPORT int KoLUM_WaitNotification(void);

/*
 * Waits for a change for at most SECONDS. Returns 0 when one was posted, 1 when the time ran out,
 * -1 on other errors, a signal included. The clock is the system's wall clock, to the nanosecond.
 */
KOLUM_EXPORT int KoLUM_TimedWaitNotification(int seconds);

/* Waits for a stop without bound. Returns 0, or -1 with errno (EINTR after a signal). */
KOLUM_EXPORT int KoLUM_WaitStopNotification(void);

/*
 * Waits for a stop for at most SECONDS, counted from the last full second of the wall clock;
 * signals do not end the wait. Returns 0 when one was posted, 1 when the time ran out, 2 on other
 * errors.
 */
KOLUM_EXPORT int KoLUM_WaitStopNotificationTimeOut(int seconds);

/* Takes back every change that is posted and not waited for yet. Always returns -1. */
KOLUM_EXPORT int KoLUM_ClearNotification(void);

/* Takes back every stop that is posted and not waited for yet. Always returns -1. */
KOLUM_EXPORT int KoLUM_ClearStopNotification(void);

KOLUM_C_END

#endif
