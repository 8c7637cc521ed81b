/*
 * Songs: their technical data and DLNA profile, DSD files with their tags, and album pictures in
 * their folders.
 *
 * DSD files (".dsf", ".dff") are read by the external program "dsf2flac" in the folder given to
 * KoLUM_Init. Each call runs it through the shell and waits for it; it inherits the caller's
 * standard error. If it cannot be started, "error" is printed to standard output.
 *
 * Every function may be called from any thread. Folder names end with "/". See <kolum/kolum.h> for
 * what is read of a file.
 */
#ifndef KOLUM_AUDIO_H
#define KOLUM_AUDIO_H

#include <stdint.h>

#include <kolum/export.h>

KOLUM_C_BEGIN

/*
 * Technical data of a song: of the file and of its first audio stream. FOLDER and FILENAME together
 * may have at most 1023 characters. Null outputs are skipped; an output without a value keeps what
 * the caller put there, so preset them.
 *
 *   containerBitRate  bit/s of the whole file
 *   bitRate           bit/s of the stream; kbit/s of a DSD file
 *   sampleRate        Hz
 *   bitsPerSample     bits per coded sample
 *   channels          number of channels
 *   durationSec       whole seconds; untouched when the duration is unknown
 *   containerFormat   FORMAT_*, with the MPEG4_* brand in the high 16 bits of an MP4 file; -1 (all
 *                     bits) for a container without a number
 *   codecId           CODEC_ID_*
 *   profile           PROFILE_*
 *   level             FFmpeg's level number, or LEVEL_UNKNOWN
 *   dlnaProfile       a buffer of at least 16 bytes for the DLNA audio profile's name; untouched
 *                     when the song has none
 *
 * Returns 0 on success. A file without any stream, or without an audio stream, also succeeds, with
 * all outputs untouched. Returns 1 with all outputs untouched when FOLDER or FILENAME is null, the
 * path is too long, or the file does not exist or cannot be opened as media. Also returns 1 when
 * the stream's codec has no number; containerBitRate, bitRate, durationSec and profile are then
 * written.
 *
 * A file named "*.dsf" or "*.dff" (in any letter case) is a DSD file: channels is set to 2, profile
 * to PROFILE_UNKNOWN, level to LEVEL_UNKNOWN, containerFormat to FORMAT_DSF or FORMAT_DFF;
 * GetDsfMetadata2 does the rest, and its result is returned; codecId and dlnaProfile stay
 * untouched. For other songs the function writes a line about the duration to standard error.
 */
KOLUM_EXPORT unsigned int GetAudioMetadata(const char* folder, const char* fileName,
                                           uint32_t* containerBitRate, uint32_t* bitRate,
                                           uint32_t* sampleRate, uint32_t* bitsPerSample,
                                           uint32_t* channels, uint32_t* durationSec,
                                           uint32_t* containerFormat, uint32_t* codecId,
                                           int32_t* profile, int32_t* level, char* dlnaProfile);

/*
 * The numbers of a DSD file as the external program reports them. Outputs without a reported value
 * stay untouched; null outputs are skipped. bitRate, in kbit/s, is channels (the caller's preset if
 * the program reports none) times sampleRate divided by 1000; it is written only together with
 * sampleRate. The arguments are those of GetAudioMetadata; containerBitRate and bitsPerSample are
 * not used. Returns 0 on success; 1 with all outputs untouched when FOLDER or FILENAME is null, the
 * path is longer than 1023 characters, or the program printed no document for the file (for example
 * because the program is missing).
 */
KOLUM_EXPORT unsigned int GetDsfMetadata2(const char* folder, const char* fileName,
                                          uint32_t* containerBitRate, uint32_t* bitRate,
                                          uint32_t* sampleRate, uint32_t* bitsPerSample,
                                          uint32_t* channels, uint32_t* durationSec);

/*
 * Texts and numbers of a DSD file. The texts are UTF-8, in buffers of 256 bytes, cut to fit.
 * Outputs without a value stay untouched; null outputs are skipped.
 *
 * The texts of a "*.dsf" file come from its ID3v2 tag, from Unicode frames only: Latin-1 frames are
 * left to GetDsfMetadata. Those of any other file come from the external program, and its artist is
 * also used as the album artist. The numbers come from the program, as in GetDsfMetadata2, except
 * that a duration it does not report is written as 0; year and track are written only if DURATION
 * is given and they are not 0. Returns the same as GetDsfMetadata2; texts of a tag are written
 * before the program is run.
 */
KOLUM_EXPORT unsigned int GetDsfMetadata3(const char* folder, const char* fileName, char* title,
                                          char* artist, char* albumArtist, char* album,
                                          int32_t* year, int32_t* track, uint32_t* duration,
                                          uint32_t* channels, uint32_t* sampleRate,
                                          uint32_t* bitRate);

/* A DSD song. The caller clears it before the call. */
typedef struct songObject_st {
  int32_t track;
  uint32_t duration; /* whole seconds */
  char title[256];   /* texts in UTF-8 */
  char artist[256];
  char albumArtist[256];
  char album[256];
  int32_t year;
  char genre[256];
  uint32_t reserved1[2];    /* never touched */
  uint32_t sampleRate;      /* Hz, of the DSD stream: 2822400 for DSD64 */
  uint32_t bitRate;         /* kbit/s */
  uint32_t channels;        /* 2 when unknown */
  uint32_t containerFormat; /* FORMAT_DSF, of ".dff" files too */
  uint32_t reserved2;       /* never touched */
  int32_t profile;          /* PROFILE_UNKNOWN */
  int32_t level;            /* LEVEL_UNKNOWN */
} songObject_st;

/*
 * Describes a DSD file: GetDsfMetadata3 first; then the container's tags, as FFmpeg reads them,
 * fill the texts still empty and the numbers still 0. Returns 0 on success, whether or not the
 * external program ran; 1 when an argument is null, or FFmpeg cannot open the file or finds no
 * stream in it. In the latter case RECORD keeps what the first part found.
 */
KOLUM_EXPORT unsigned int GetDsfMetadata(const char* folder, const char* fileName,
                                         songObject_st* record);

/*
 * Looks for an album picture in a folder: "cover.jpg", "Cover.jpg", "folder.jpg", "Folder.jpg",
 * "front.jpg", "Front.jpg". The first that exists wins; other spellings do not count. Returns 0
 * with its path in COVERPATH (a buffer of 1024 bytes), or 1 with COVERPATH untouched when there is
 * none or an argument is null. The path is cut at 1023 characters, and the cut path is looked for.
 */
KOLUM_EXPORT unsigned int KoLUM_CheckLocalAlbum(const char* folder, char* coverPath);

/*
 * Whether a file name is that of an album picture, so that photo scans can skip it. Returns 0 when
 * it begins with one of the names above ("cover.jpg.bak" counts), 1 when it does not or is null.
 */
KOLUM_EXPORT unsigned int KoLUM_CheckSpecialCover(const char* fileName);

KOLUM_C_END

#endif
