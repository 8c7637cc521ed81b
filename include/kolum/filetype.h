/*
 * File types: the tables of extensions the media library knows, classification of files by their
 * names, and two printers.
 *
 * The place of a row in its table is the file type's identity: hosts store row numbers and address
 * rows by bit numbers. Rows are only ever added at a table's end.
 */
#ifndef KOLUM_FILETYPE_H
#define KOLUM_FILETYPE_H

#include <stdint.h>

#include <kolum/export.h>

KOLUM_C_BEGIN

/* One row: a file name extension and what it implies. A table ends with a row of zeros. */
typedef struct MediaFileInfo {
  const char* extension; /* with its dot, lower case, at most 9 characters; null ends the table */
  const char* mimeType;
  uint64_t formatIds; /* songs: container format identifier in the low 32 bits, CODEC_ID_* of the
                         audio in the high 32; pictures: picture format number; else 0 */
  uint64_t flag;      /* songs: 0 or 1, carried for the host; else 0 */
} MediaFileInfo;

/* The tables, and their sizes in rows, the closing one included (the playlists' is not told). */
KOLUM_EXPORT extern const MediaFileInfo g_VideoFileInfo[];
KOLUM_EXPORT extern const MediaFileInfo g_SongFileInfo[];
KOLUM_EXPORT extern const MediaFileInfo g_PictureFileInfo[];
KOLUM_EXPORT extern const MediaFileInfo g_PlaylistFileInfo[];
KOLUM_EXPORT extern const uint64_t g_VideoFileInfoSize;
KOLUM_EXPORT extern const uint64_t g_SongFileInfoSize;
KOLUM_EXPORT extern const uint64_t g_PictureFileInfoSize;

/* Scan states that hosts store with a file; the library only publishes them. */
KOLUM_EXPORT extern const int kScannedFlagNotReady;
KOLUM_EXPORT extern const int kScannedFlagFound;
KOLUM_EXPORT extern const int kScannedFlagThumbNotReady;
KOLUM_EXPORT extern const int kScannedFlagNotFound;
KOLUM_EXPORT extern const int kScannedFlagOversize;
KOLUM_EXPORT extern const int kScannedFlagPathInvalid;
KOLUM_EXPORT extern const int kScannedFlagLessThanMin;
KOLUM_EXPORT extern const int kScannedFlagInBlacklist;
KOLUM_EXPORT extern const int kScannedFlagNeedRegen;
KOLUM_EXPORT extern const int kScannedFlagNeedUpdate;
KOLUM_EXPORT extern const int kScannedFlagScanning;
KOLUM_EXPORT extern const int kScannedFlagParamError;

/* One link of a bucket's chain in the index over a table. */
typedef struct MediaFileNode {
  uint32_t row;          /* from 0 */
  const char* extension; /* the row's own */
  struct MediaFileNode* next;
} MediaFileNode;

/* The index: an array of buckets per table, null when empty. Built by the first classification and
   never changed after it; read-only for hosts. g_initHash is 0 before, 1 after. */
KOLUM_EXPORT extern MediaFileNode* g_pHashVideo[180];
KOLUM_EXPORT extern MediaFileNode* g_pHashMusic[100];
KOLUM_EXPORT extern MediaFileNode* g_pHashPicture[20];
KOLUM_EXPORT extern MediaFileNode* g_pHashPlaylist[10];
KOLUM_EXPORT extern int g_initHash;

/*
 * Tells the kind of a file by its name (or path) alone.
 *
 * KINDS says which kinds are wanted: the sum of 1 music, 2 video, 4 photo, 8 playlist; its bits 8
 * to 15 carry a tag byte of the caller's. ROW receives the row that matched, counted from 1, or 0;
 * TAG the tag byte when videos are wanted, else 0. Null outputs are skipped.
 *
 * Returns 1 music, 2 video, 3 photo, 5 playlist; 0 for an unknown extension, a kind that is not
 * wanted, an excluded row, a null FILENAME (ROW and TAG untouched), and for an ".ifo" or ".bdmv"
 * file that is not the index of a DVD or Blu-ray disc (ROW is then set nevertheless). Any thread.
 */
KOLUM_EXPORT int KoLUM_GetFilenameType(const char* fileName, unsigned int* row, unsigned int kinds,
                                       unsigned int* tag);

/*
 * Excludes the rows of a kind (0 music, 1 photo, 2 video, 3 playlist: not the numbers above) whose
 * bits are set in MASK, bit 0 for the first row; the earlier mask is replaced. Songs' rows 7
 * (".dts") and 10 (".ac3") stay excluded whatever MASK says. Returns 0, or 1 for an unknown KIND or
 * a negative MASK. Any thread.
 */
KOLUM_EXPORT int KoLUM_SetFileTypeUmaskInternal(unsigned int kind, long long mask);

/*
 * Prints the extensions that "/etc/config/medialibrary.conf" leaves enabled to standard output, as
 * XML. The masks set in this process do not count, nor do the built-in exclusions; of the
 * configured 32 bits the 33rd row follows the first again. Returns 0, or 1 when the file cannot be
 * loaded.
 */
KOLUM_EXPORT int KoLUM_PrintFileExtList(void);

/* Prints the index to standard output; headings only before the first classification. */
KOLUM_EXPORT void dumpHashTable(void);

KOLUM_C_END

#endif
