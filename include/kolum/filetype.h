/*
 * File types: the extensions that the media library knows, and the classification of files by name.
 *
 * Any thread may classify at any time: the first call builds the index, once and under a lock.
 * Masks are plain process state: set them before threads classify.
 */
#ifndef KOLUM_FILETYPE_H
#define KOLUM_FILETYPE_H

#include <stdint.h>

#include <kolum/export.h>

KOLUM_C_BEGIN

/* One row of a file type table. A row of zeros ends each table. */
typedef struct MediaFileInfo {
  const char* extension; /* with its dot, in lower case, at most 9 characters */
  const char* mimeType;
  /*
   * Songs: container format identifier in the low 32 bits, CODEC_ID_* in the high ones. Pictures:
   * the host's picture format number. Otherwise 0.
   */
  uint64_t formatIds;
  uint64_t flag; /* songs: 0 or 1, for the host; otherwise 0 */
} MediaFileInfo;

/*
 * The tables. Functions report row numbers, counted from 1, as positions in them; positions never
 * change.
 */
KOLUM_EXPORT extern const MediaFileInfo g_VideoFileInfo[];
KOLUM_EXPORT extern const MediaFileInfo g_SongFileInfo[];
KOLUM_EXPORT extern const MediaFileInfo g_PictureFileInfo[];
KOLUM_EXPORT extern const MediaFileInfo g_PlaylistFileInfo[];

/* The number of rows in each table, including the closing row of zeros. */
KOLUM_EXPORT extern const uint64_t g_VideoFileInfoSize;
KOLUM_EXPORT extern const uint64_t g_SongFileInfoSize;
KOLUM_EXPORT extern const uint64_t g_PictureFileInfoSize;

/* Scan states of a file, for hosts to store; the library itself does not use them. */
KOLUM_EXPORT extern const int kScannedFlagNotReady;      /* 0 */
KOLUM_EXPORT extern const int kScannedFlagFound;         /* 1 */
KOLUM_EXPORT extern const int kScannedFlagThumbNotReady; /* 2 */
KOLUM_EXPORT extern const int kScannedFlagNotFound;      /* 16 */
KOLUM_EXPORT extern const int kScannedFlagOversize;      /* 17 */
KOLUM_EXPORT extern const int kScannedFlagPathInvalid;   /* 18 */
KOLUM_EXPORT extern const int kScannedFlagLessThanMin;   /* 20 */
KOLUM_EXPORT extern const int kScannedFlagInBlacklist;   /* 21 */
KOLUM_EXPORT extern const int kScannedFlagNeedRegen;     /* 22 */
KOLUM_EXPORT extern const int kScannedFlagNeedUpdate;    /* 23 */
KOLUM_EXPORT extern const int kScannedFlagScanning;      /* 66 */
KOLUM_EXPORT extern const int kScannedFlagParamError;    /* 90 */

/* The kinds of files that classification reports. The number 4 is not used. */
enum {
  MEDIA_KIND_NONE = 0, /* not a media file, or of a kind not asked for */
  MEDIA_KIND_MUSIC = 1,
  MEDIA_KIND_VIDEO = 2,
  MEDIA_KIND_PHOTO = 3,
  MEDIA_KIND_PLAYLIST = 5
};

/* The kinds that classification is asked for: bits, to be combined. */
enum {
  MEDIA_KIND_BIT_MUSIC = 1,
  MEDIA_KIND_BIT_VIDEO = 2,
  MEDIA_KIND_BIT_PHOTO = 4,
  MEDIA_KIND_BIT_PLAYLIST = 8,
  MEDIA_KIND_BITS_ALL = 15 /* all of these */
};

/* The kinds whose rows a mask can exclude. */
enum {
  MEDIA_KIND_MASK_MUSIC = 0,
  MEDIA_KIND_MASK_PHOTO = 1,
  MEDIA_KIND_MASK_VIDEO = 2,
  MEDIA_KIND_MASK_PLAYLIST = 3
};

/* A node of the index over a table: rows whose extensions share a bucket form a chain. */
typedef struct MediaHashNode {
  unsigned int row; /* position in the table, from 0 */
  const char* extension;
  struct MediaHashNode* next; /* null at the end */
} MediaHashNode;

/* The index: heads of chains, null where a bucket is empty. Built once, never freed. */
KOLUM_EXPORT extern MediaHashNode* g_pHashVideo[180];
KOLUM_EXPORT extern MediaHashNode* g_pHashMusic[100];
KOLUM_EXPORT extern MediaHashNode* g_pHashPicture[20];
KOLUM_EXPORT extern MediaHashNode* g_pHashPlaylist[10];

/* 0 until building of the index begins, then 1. For hosts to read only. */
KOLUM_EXPORT extern int g_initHash;

/*
 * Classifies a file by its name or path. KINDS holds the kinds to look for (MEDIA_KIND_BIT_*) and,
 * in bits 8 to 15, a tag of the caller's. Returns the kind (MEDIA_KIND_*), or MEDIA_KIND_NONE for
 * everything else: an unknown or excluded extension, a kind not asked for, an ".ifo" file that is
 * not a DVD's, a ".bdmv" file that is not a Blu-ray index, a null name.
 *
 * ROW receives the number of the matching row, counted from 1, or 0; it is also set for rejected
 * ".ifo" and ".bdmv" files. TAG receives the caller's tag when video was asked for and the name has
 * a dot, else 0. Either may be null. Both stay untouched for a null name.
 */
KOLUM_EXPORT int KoLUM_GetFilenameType(const char* fileName, unsigned int* row, unsigned int kinds,
                                       unsigned int* tag);

/*
 * Excludes the rows whose bits are set in MASK (bit 0 is the first row) from the classification of
 * a kind (MEDIA_KIND_MASK_*). The mask replaces the previous one; ".dts" and ".ac3" stay excluded
 * from music whatever the mask. Returns 0, or 1 for an unknown kind or a negative mask.
 */
KOLUM_EXPORT int KoLUM_SetFileTypeUmaskInternal(unsigned int kind, long long mask);

/*
 * Prints an XML document of the extensions that "/etc/config/medialibrary.conf" enables to standard
 * output. It reads the file on each call and ignores the masks in memory. A configured mask has 32
 * bits, so row 33 follows bit 0 again. Returns 0, or 1 when the file cannot be read.
 */
KOLUM_EXPORT int KoLUM_PrintFileExtList(void);

/* Prints the index to standard output; only headings while it is not built. */
KOLUM_EXPORT void dumpHashTable(void);

KOLUM_C_END

#endif
