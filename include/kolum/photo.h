/*
 * Photos: size and pixel format of a picture.
 *
 * Every function may be called from any thread. The picture of a file is its first video stream. A
 * file that opens but contains no picture succeeds, with the outputs as described. FFmpeg's own
 * messages go to standard error. Of usual photos only the header is read; see <kolum/kolum.h> for
 * what is read of other files.
 */
#ifndef KOLUM_PHOTO_H
#define KOLUM_PHOTO_H

#include <stdint.h>

#include <kolum/export.h>

KOLUM_C_BEGIN

/*
 * The pixel format of a picture, as the number that FFmpeg 57 gives it, whichever release is
 * linked: 0 is yuv420p, 12 yuvj420p; -1 (all bits) for a format added later. FOLDER ends with "/";
 * folder and name together may have at most 1023 characters. PIXELFORMAT is set to all bits (-1)
 * first and stays so when there is no picture. Returns 0 on success; 1 when an argument is null,
 * the path is too long, or the file does not exist or cannot be opened as media.
 */
KOLUM_EXPORT unsigned int GetPhotoMetadata(const char* folder, const char* fileName,
                                           uint32_t* pixelFormat);

/*
 * Width and height of a picture in pixels, as stored (an orientation in its tags is ignored).
 * Returns 0 on success, even without a picture; 1 when an argument is null or the file does not
 * exist or cannot be opened as media. Without a picture, and on failure, both stay untouched.
 */
KOLUM_EXPORT unsigned int GetPhotoHW(const char* path, uint32_t* width, uint32_t* height);

KOLUM_C_END

#endif
