/*
 * Isolation: media files are read in another process.
 *
 * Media files come from strangers, and the libraries that read them are large. With isolation on,
 * every function of this library that reads the content of a media file lets a worker process do
 * so. It gets the opened file and answers with numbers and texts; it has no file system, no
 * network, no programs, no rights, and little memory and time. The functions give the same answers
 * and result codes. A file that crashes its reader, or takes more than 30 s, 15 s of processor time
 * or 1 GiB of memory, counts as a file that cannot be opened: that one call fails, and the host's
 * log gets a line with the reason. A call for which no worker can be started fails in the same way.
 * A call takes some tens of microseconds longer.
 *
 * Workers run the program kolum-worker, which is installed with the library. They are children of
 * the calling process, made and ended as needed, one for each call at a time and 16 at rest at
 * most: a host that waits for any child may get their process numbers. Each takes two descriptors.
 * A host that ends does not need to do anything: its workers end by themselves. A forked child gets
 * workers of its own. A thread that waits for its worker is kept on one processor for that time.
 *
 * What stays in the calling process: looking for the main title of a disc and mounting disc images
 * (KoLUM_Describe mounts only those that a worker cannot read), programs that the library runs
 * (dsf2flac, thumbnail tools), and getVideoKeyFrameTime with other URLs than files, because a
 * worker has no network.
 */
#ifndef KOLUM_ISOLATION_H
#define KOLUM_ISOLATION_H

#include <kolum/export.h>

/* How media files are read. */
enum {
  KOLUM_ISOLATION_OFF = 0,   /* in the calling process */
  KOLUM_ISOLATION_ON = 1,    /* in a worker, with the protections that this system has */
  KOLUM_ISOLATION_STRICT = 2 /* in a worker with all protections, or not at all */
};

KOLUM_C_BEGIN

/*
 * Chooses how media files are read from now on, for all threads; calls that are under way end as
 * they began. MODE is one of KOLUM_ISOLATION_*. Until the first call, the environment variable
 * KOLUM_ISOLATION decides ("on" or "strict", anything else is off), unless the program runs with
 * raised rights. Starts a worker, which takes some 50 ms. Returns 0 on success; 1 when MODE is
 * unknown or no such worker can be started, with the reason in the host's log: nothing changes
 * then. Any thread may call it.
 */
KOLUM_EXPORT unsigned int KoLUM_SetIsolation(int mode);

KOLUM_C_END

#endif
