/*
 * Songs: their technical data and DLNA profile, and the album picture beside them.
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
 *   bitRate           bit/s of the stream
 *   sampleRate        Hz
 *   bitsPerSample     bits per coded sample
 *   channels          number of channels
 *   durationSec       whole seconds; untouched when the duration is unknown
 *   containerFormat   FORMAT_*, with the MPEG4_* brand in the high 16 bits of an MP4 file; -1 (all
 *                     bits) for a container without a number
 *   codecId           CODEC_ID_*
 *   profile           PROFILE_*
 *   level             FFmpeg's level number, -99 unknown
 *   dlnaProfile       a buffer of at least 16 bytes for the DLNA audio profile's name; untouched
 *                     when the song has none
 *
 * Returns 0 on success. A file without any stream, or without an audio stream, is a success too,
 * with every output untouched. Returns 1 when FOLDER or FILENAME is null, the path is too long, or
 * the file does not exist or cannot be opened as media, every output untouched; and when the
 * stream's codec has no number, with containerBitRate, bitRate, durationSec and profile written.
 * Writes a line on the duration to standard error.
 */
KOLUM_EXPORT unsigned int GetAudioMetadata(const char* folder, const char* fileName,
                                           uint32_t* containerBitRate, uint32_t* bitRate,
                                           uint32_t* sampleRate, uint32_t* bitsPerSample,
                                           uint32_t* channels, uint32_t* durationSec,
                                           uint32_t* containerFormat, uint32_t* codecId,
                                           int32_t* profile, int32_t* level, char* dlnaProfile);

/*
 * Looks for an album picture in a folder: "cover.jpg", "Cover.jpg", "folder.jpg", "Folder.jpg",
 * "front.jpg", "Front.jpg", the first of them winning; other spellings do not count. Returns 0 with
 * its path in COVERPATH (a buffer of 1024 bytes, a longer path is cut), or 1 when there is none or
 * an argument is null, COVERPATH then untouched. The folder's path counts up to 1023 characters,
 * name included.
 */
KOLUM_EXPORT unsigned int KoLUM_CheckLocalAlbum(const char* folder, char* coverPath);

/*
 * Whether a file name is that of an album picture, so that photo scans leave it out. Returns 0 when
 * it begins with one of the names above ("cover.jpg.bak" counts), 1 when not, or for null.
 */
KOLUM_EXPORT unsigned int KoLUM_CheckSpecialCover(const char* fileName);

KOLUM_C_END

#endif
