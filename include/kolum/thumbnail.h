/*
 * Artwork of songs, the system's thumbnail folders, build-time stamps, and running programs.
 *
 * Pictures are scaled by tools: "ffmpeg" from the working path (see frame.h), and if that fails
 * ImageMagick's "/usr/local/sbin/convert". docs/artwork.md shows the commands and the folders.
 *
 * Paths of more than 511 bytes or with a single quote, which would not reach the tool unchanged,
 * and commands of more than 1023 bytes are refused: no tool runs. Null arguments fail like missing
 * files. Nothing throws; all functions may be called from any thread.
 */
#ifndef KOLUM_THUMBNAIL_H
#define KOLUM_THUMBNAIL_H

#include <kolum/export.h>

KOLUM_C_BEGIN

/*
 * The extensions of video posters, ".jpeg", ".png" and ".jpg", in the order in which a host tries
 * them, and their number. The library itself does not use them.
 */
KOLUM_EXPORT extern const char* const kVideoPosterExtList[3];
KOLUM_EXPORT extern const int kVideoPosterExtNum;

/* The files that hold the time of the last build, relative to the data volume's root. */
KOLUM_EXPORT extern const char kThumbLastBuildTime[];
KOLUM_EXPORT extern const char kFaceLastBuildTime[];
KOLUM_EXPORT extern const char kImgClassifyLastBuildTime[];

/*
 * Runs the program ARGV[0] (looked up in PATH) with the null-terminated arguments ARGV, and waits
 * for it. Its environment is the caller's with LD_LIBRARY_PATH set to "/usr:/usr/lib".
 *
 * If RETURNEXITCODE is not 0, returns the program's exit status, 0 to 255. If it is 0, returns 0
 * for status 0, and 1 otherwise. Returns 1 when a signal ended the program, and when ARGV is null
 * or empty. A program that cannot be started counts as one that ended with 0, even if fork() fails.
 * The program inherits standard output and standard error, and the child logs its command through
 * the host before it starts.
 */
KOLUM_EXPORT int ExecCommand(const char** argv, int returnExitCode);

/* 1 when PATH exists, whatever its type; 0 when it does not. */
KOLUM_EXPORT int isFileExist(const char* path);

/*
 * Copies the file SRC to DST and makes DST readable and writable for everybody. Returns the status
 * of changing the mode, 0 on success. Whether the copy succeeded is not checked. Returns -1 when an
 * argument is null.
 */
KOLUM_EXPORT int copyAndChmod(const char* src, const char* dst);

/*
 * Looks for transcoded copies of the file FILENAME in FOLDER (which ends with "/"): in
 * ".@__thumb/transcode/" below FOLDER, the file's name with one of the suffixes ".mobile240p",
 * ".mobile360p", ".ipad720p", ".mobile480p" and ".mobile1080p". Returns 0 when there is one, -1
 * when there is none.
 */
KOLUM_EXPORT int LUM_IsTranscodeFileExist(const char* folder, const char* fileName);

/*
 * Looks for the picture of an artist below BASE (which ends with "/"): "artist.jpg" in the artist's
 * folder. The folder is named after the artist in lower-case, file-name-safe form (see
 * StringConvert2LowerFileString), at most 255 bytes; names that begin with "UNKNOWN" keep their
 * spelling.
 *
 * Writes the picture's path relative to BASE into RELPATH, which holds at least 267 bytes. Returns
 * 1 when the picture exists, 0 when it does not. RELPATH is written in both cases, unless the name
 * cannot be converted.
 */
KOLUM_EXPORT int LUM_CheckMusicArtistThumbnail(const char* base, const char* artist, char* relPath);

/*
 * Makes sure that an album has its thumbnail, 252 by 252 pixels, below BASE (which ends with "/"):
 * the artist's folder, "/", the album's name and ".jpg", both names formed as above (the album's in
 * at most 249 bytes). If it is missing or empty, it is made together with a small one ("-1.jpg",
 * 126 by 126) from the picture "@_", album's name, ".jpg" or ".png" in the same folder, which is
 * deleted afterwards. ffmpeg crops to the square, ImageMagick fits the picture into it; users'
 * libraries hold both kinds.
 *
 * Writes the thumbnail's path relative to BASE into RELPATH, which holds at least 516 bytes.
 * Returns 1 when the thumbnail existed or was made, 0 otherwise; the source picture is then kept
 * for a later attempt. RELPATH is written in both cases, unless a name cannot be converted.
 */
KOLUM_EXPORT int LUM_CheckMusicAlbumArt(const char* base, const char* artist, const char* album,
                                        char* relPath);

/*
 * Names the folder of a system thumbnail: MEDIATYPE in hexadecimal, the lowest byte of ID as two
 * hexadecimal digits, "/". Type 3 and item 0x1234 give "334/".
 *
 * FOLDERNAME holds SIZE bytes, at least 4; longer names are cut. Returns 0 on success, 1 with
 * FOLDERNAME untouched when MEDIATYPE is above 20, ID below 1, FOLDERNAME null or SIZE below 4.
 */
KOLUM_EXPORT int getSystemThumbFolderName(unsigned int mediaType, long id, int size,
                                          char* folderName);

/*
 * Empties FOLDER, relative to the data volume's root: removes it with everything in it and creates
 * it again. Returns 0, even if that fails. Returns 1 and touches nothing when the data volume is
 * unknown, or when FOLDER is null, contains a "..", is the data volume itself, or makes a path of
 * more than 1023 bytes.
 */
KOLUM_EXPORT int removeSystemThumbnail(const char* folder);

/*
 * Writes the current time into STAMPFILE (one of the names above), relative to the data volume's
 * root: seconds since 1970-01-01 UTC, as decimal digits only. The file is replaced. Threads of this
 * process take turns. Returns 0 even if the file could not be written: builders continue without a
 * stamp.
 */
KOLUM_EXPORT int saveLastBuildTime(const char* stampFile);

KOLUM_C_END

#endif
