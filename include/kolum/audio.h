/*
 * Songs: the album picture beside them.
 *
 * Every function may be called from any thread. Folders are named with their closing "/".
 */
#ifndef KOLUM_AUDIO_H
#define KOLUM_AUDIO_H

#include <stdint.h>

#include <kolum/export.h>

KOLUM_C_BEGIN

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
