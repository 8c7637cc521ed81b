/*
 * All that is known of a media file, as one text: a JSON object with everything that the records of
 * the other headers have, and with titles, artists, dates, places, cameras, languages, streams and
 * chapters. docs/document.md lists the keys with their meaning; docs/kolum.schema.json is their
 * JSON schema ("probe").
 *
 * The file is always read by a worker (see <kolum/isolation.h>), whatever KoLUM_SetIsolation()
 * said: what is wrong with a file is in its document as "error", with a code and a reason, and
 * never harms the caller. Any number of threads may call these functions; each call has a worker of
 * its own while it lasts.
 *
 * Places come from GeoNames (https://www.geonames.org, licence CC BY 4.0): name the source wherever
 * you show them. The program osm_info, installed with this library or on an appliance, knows them
 * and needs no network. The first position starts it, as a child of the calling process with one
 * descriptor here, and it serves all later ones; it ends with the process or by
 * KoLUM_ForgetPlaces(). If it does not answer within 5 s, or not as it should, it is ended and
 * started again, three times in all; then, or if there is none, documents with a position have the
 * warning "place-unknown" with the reason instead of a place.
 */
#ifndef KOLUM_DESCRIBE_H
#define KOLUM_DESCRIBE_H

#include <kolum/export.h>
#include <stddef.h>

/* What the functions return. */
enum {
  KOLUM_DESCRIBED = 0,     /* a document without an error */
  KOLUM_NOT_DESCRIBED = 1, /* a document that says why there is no more of it, in "error" */
  KOLUM_NO_DOCUMENT = 2    /* no text: TEXT is null; the path or name is null or empty; OPTIONS have
                              a smaller size, unknown flags, an unknown kind or a negative audio
                              stream; FD is not a file or block device; no memory */
};

/* What a document has beyond what records have. */
enum {
  KOLUM_DETAILS = 1,     /* tags, streams, chapters, content type, warnings */
  KOLUM_BY_CONTENT = 2,  /* the content decides which kind of file it is, not the name */
  KOLUM_FINGERPRINT = 4, /* a number to find copies by, which costs up to 128 KiB more to read */
  KOLUM_PLACES = 8       /* with KOLUM_DETAILS: the nearest known place for a position */
};

/* May grow at its end. Zeros are the usual values. */
typedef struct KoLUM_DescribeOptions {
  size_t size;               /* of this structure, as the caller was compiled with */
  unsigned int flags;        /* KOLUM_DETAILS, KOLUM_BY_CONTENT, ... */
  int kind;                  /* MEDIA_KIND_VIDEO, _MUSIC or _PHOTO whatever the name says; 0: not
                                given */
  int audioStream;           /* the audio stream of a video to describe, from 0 */
  unsigned int deadline;     /* milliseconds for one file; 0: 30,000 */
  unsigned long long memory; /* bytes of address space of a worker; 0: 1 GiB */
} KoLUM_DescribeOptions;

KOLUM_C_BEGIN

/*
 * Describes the file PATH. A folder is none; the index file of a DVD (VIDEO_TS.IFO) or Blu-ray disc
 * (index.bdmv) stands for the disc's main title. OPTIONS may be null, which stands for zeros and
 * KOLUM_DETAILS. *TEXT becomes the document, in UTF-8 and terminated, to be given to
 * KoLUM_FreeText(); null with KOLUM_NO_DOCUMENT. Numbers of songs in DSD are what the program
 * dsf2flac in the folder that KoLUM_Init() was given reports, and otherwise what the file's header
 * says. Returns KOLUM_DESCRIBED, KOLUM_NOT_DESCRIBED or KOLUM_NO_DOCUMENT. Prints nothing.
 */
KOLUM_EXPORT int KoLUM_Describe(const char* path, const KoLUM_DescribeOptions* options,
                                char** text);

/*
 * The same for a file that is open for reading as FD, which stays open and keeps its position. NAME
 * is the file's name, for its kind and its MIME type; "file" in the document, too. Discs cannot be
 * described so, and dsf2flac is not asked. Returns the same numbers.
 */
KOLUM_EXPORT int KoLUM_DescribeFd(int fd, const char* name, const KoLUM_DescribeOptions* options,
                                  char** text);

/* Releases a document; null is allowed. */
KOLUM_EXPORT void KoLUM_FreeText(char* text);

/*
 * Ends osm_info and forgets the places that it has found; for KOLUM_PLACES it is started again. To
 * be called before the library is unloaded, which would leave it as a child that waits. Waits for
 * an answer that is under way. Any thread may call it.
 */
KOLUM_EXPORT void KoLUM_ForgetPlaces(void);

KOLUM_C_END

#endif
