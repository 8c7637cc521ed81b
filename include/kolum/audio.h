/*
 * Songs: their technical data and DLNA profile, DSD files with their tags, and the album picture
 * beside them.
 *
 * DSD files (".dsf", ".dff") are described by the external program "dsf2flac" in the folder that
 * KoLUM_Init was given. It is run for each call, through the shell, and waited for; its standard
 * error is the caller's. Where it cannot be run at all, "error" appears on standard output.
 *
 * Every function may be called from any thread. Folders are named with their closing "/".
 */
#ifndef KOLUM_AUDIO_H
#define KOLUM_AUDIO_H

#include <stdint.h>

#include <kolum/export.h>

KOLUM_C_BEGIN

/*
 * The technical data of a song: of the file and of its first audio stream. FOLDER and FILENAME
 * together have at most 1023 characters. A null output is skipped; an output without a value keeps
 * what the caller put there, so preset them.
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
 * Returns 0 on success. A file without any stream, or without an audio stream, is a success too,
 * with every output untouched. Returns 1 when FOLDER or FILENAME is null, the path is too long, or
 * the file does not exist or cannot be opened as media, every output untouched; and when the
 * stream's codec has no number, with containerBitRate, bitRate, durationSec and profile written.
 *
 * A file named "*.dsf" or "*.dff" (in any case) is a DSD file: channels becomes 2, profile
 * PROFILE_UNKNOWN, level LEVEL_UNKNOWN, containerFormat FORMAT_DSF or FORMAT_DFF; GetDsfMetadata2
 * does the rest, and its result is returned; codecId and dlnaProfile stay untouched. For other
 * songs the function writes a line on the duration to standard error.
 */
KOLUM_EXPORT unsigned int GetAudioMetadata(const char* folder, const char* fileName,
                                           uint32_t* containerBitRate, uint32_t* bitRate,
                                           uint32_t* sampleRate, uint32_t* bitsPerSample,
                                           uint32_t* channels, uint32_t* durationSec,
                                           uint32_t* containerFormat, uint32_t* codecId,
                                           int32_t* profile, int32_t* level, char* dlnaProfile);

/*
 * The numbers of a DSD file as the external program reports them; what it does not report stays
 * untouched, and null outputs are skipped. bitRate, in kbit/s, is channels (those that the caller
 * put there when the program reports none) times sampleRate divided by 1000, and is written with
 * sampleRate only. The arguments are those of GetAudioMetadata;
 * containerBitRate and bitsPerSample are not used. Returns 0 on success; 1 when FOLDER or FILENAME
 * is null, the path is longer than 1023 characters, or the program printed no document for the
 * file (is missing, say), with everything untouched.
 */
KOLUM_EXPORT unsigned int GetDsfMetadata2(const char* folder, const char* fileName,
                                          uint32_t* containerBitRate, uint32_t* bitRate,
                                          uint32_t* sampleRate, uint32_t* bitsPerSample,
                                          uint32_t* channels, uint32_t* durationSec);

/*
 * Texts and numbers of a DSD file. The texts are buffers of 256 bytes, cut to fit, in UTF-8; what
 * is not found stays untouched, and null outputs are skipped.
 *
 * Of a "*.dsf" file the texts come from its ID3v2 tag, from frames in Unicode only: those in
 * Latin-1 are left to GetDsfMetadata. Of any other they come from the external program, the artist
 * as the album artist too. The numbers come from the program, as in GetDsfMetadata2, except that a
 * duration that it does not tell is written as 0; year and track are written only when DURATION is
 * given, and when they are not 0. Returns as GetDsfMetadata2; texts of a tag are written before the
 * program is run.
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
 * Describes a DSD file: GetDsfMetadata3 first, then the container's own tags, as FFmpeg reads them,
 * into texts still empty and numbers still 0. Returns 0 on success, whether the external program
 * ran or not; 1 when an argument is null, or FFmpeg cannot open the file or finds no stream in it.
 * In the latter case what the first part found is in RECORD.
 */
KOLUM_EXPORT unsigned int GetDsfMetadata(const char* folder, const char* fileName,
                                         songObject_st* record);

/*
 * Looks for an album picture in a folder: "cover.jpg", "Cover.jpg", "folder.jpg", "Folder.jpg",
 * "front.jpg", "Front.jpg", the first of them winning; other spellings do not count. Returns 0 with
 * its path in COVERPATH (a buffer of 1024 bytes), or 1 when there is none or an argument is null,
 * COVERPATH then untouched. Folder and name are cut at 1023 characters together, and what is cut is
 * what is looked for.
 */
KOLUM_EXPORT unsigned int KoLUM_CheckLocalAlbum(const char* folder, char* coverPath);

/*
 * Whether a file name is that of an album picture, so that photo scans leave it out. Returns 0 when
 * it begins with one of the names above ("cover.jpg.bak" counts), 1 when not, or for null.
 */
KOLUM_EXPORT unsigned int KoLUM_CheckSpecialCover(const char* fileName);

KOLUM_C_END

#endif
