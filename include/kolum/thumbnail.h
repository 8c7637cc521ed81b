/*
 * Artwork of songs, the system's thumbnail folders, build-time stamps, and the running of programs.
 *
 * Pictures are scaled by tools: "ffmpeg" from the working path (see frame.h), and where that fails
 * ImageMagick's "/usr/local/sbin/convert". docs/artwork.md shows the commands and the folders.
 *
 * A path of more than 511 bytes or with a single quote, which would not reach the tool as it is,
 * and a command of more than 1023 bytes are refused: no tool runs. Null arguments fail like files
 * that do not exist. Nothing throws; all functions may be called from any thread.
 */
#ifndef KOLUM_THUMBNAIL_H
#define KOLUM_THUMBNAIL_H

#include <kolum/export.h>

KOLUM_C_BEGIN

/*
 * The extensions of video posters, ".jpeg", ".png" and ".jpg", in the order in which a host tries
 * them, and their number. The library only publishes them.
 */
KOLUM_EXPORT extern const char* const kVideoPosterExtList[3];
KOLUM_EXPORT extern const int kVideoPosterExtNum;

/* The files with the time of the last build, relative to the data volume's root. */
KOLUM_EXPORT extern const char kThumbLastBuildTime[];
KOLUM_EXPORT extern const char kFaceLastBuildTime[];
KOLUM_EXPORT extern const char kImgClassifyLastBuildTime[];

/*
 * Runs the program ARGV[0] (looked up in PATH) with the null-terminated arguments ARGV, and waits
 * for it. Its environment is the caller's with LD_LIBRARY_PATH as "/usr:/usr/lib".
 *
 * With RETURNEXITCODE other than 0: returns the program's exit status, 0 to 255. With 0: returns 0
 * when it is 0, and 1 otherwise. Returns 1 when a signal ended the program, and for an ARGV that is
 * null or empty. A program that cannot be started counts as one that ended with 0, even if fork()
 * fails. The program inherits standard output and standard error, and the child logs its command
 * through the host before it begins.
 */
KOLUM_EXPORT int ExecCommand(const char** argv, int returnExitCode);

/* 1 when PATH exists, be it a file, a folder or anything else; 0 when it does not. */
KOLUM_EXPORT int isFileExist(const char* path);

/*
 * Copies the file SRC to DST and lets everybody read and write DST. Returns the status of the
 * second step, the change of the mode: 0 on success. Whether the copy succeeded is not looked at.
 * Returns -1 when an argument is null.
 */
KOLUM_EXPORT int copyAndChmod(const char* src, const char* dst);

/*
 * Looks for transcoded copies of FOLDER's file FILENAME: ".@__thumb/transcode/" below FOLDER (which
 * closes with "/"), the file's name with one of the suffixes ".mobile240p", ".mobile360p",
 * ".ipad720p", ".mobile480p" and ".mobile1080p". Returns 0 when there is one, -1 when there is
 * none.
 */
KOLUM_EXPORT int LUM_IsTranscodeFileExist(const char* folder, const char* fileName);

/*
 * Looks for the picture of an artist below BASE (which closes with "/"), at the artist's folder and
 * "/artist.jpg". The folder is named after the artist in lower-case, file-name-safe form (see
 * StringConvert2LowerFileString), at most 255 bytes; names that begin with "UNKNOWN" stay as they
 * are.
 *
 * Writes the picture's path relative to BASE into RELPATH, which holds 267 bytes at least. Returns
 * 1 when the picture exists, 0 when it does not. RELPATH is written in both cases, but not when the
 * name cannot be converted.
 */
KOLUM_EXPORT int LUM_CheckMusicArtistThumbnail(const char* base, const char* artist, char* relPath);

/*
 * Makes sure that an album has its thumbnail, 252 by 252 pixels, below BASE (which closes with
 * "/"): the artist's folder, "/", the album's name and ".jpg", both names formed as above (the
 * album's in at most 249 bytes). When it is missing or empty, it is made together with a small one
 * ("-1.jpg", 126 by 126) from the picture "@_", album's name, ".jpg" or ".png" in the same folder,
 * which is deleted afterwards. ffmpeg crops to the square, ImageMagick fits the picture into it.
 *
 * Writes the thumbnail's path relative to BASE into RELPATH, which holds 516 bytes at least.
 * Returns 1 when the thumbnail was there or was made, 0 otherwise; the source picture stays in that
 * case for a later attempt. RELPATH is written in both cases, but not when a name cannot be
 * converted.
 */
KOLUM_EXPORT int LUM_CheckMusicAlbumArt(const char* base, const char* artist, const char* album,
                                        char* relPath);

/*
 * Names the folder of a system thumbnail: MEDIATYPE in hexadecimal, the lowest byte of ID as two
 * hexadecimal digits, "/". Type 3 and item 0x1234 give "334/".
 *
 * FOLDERNAME holds SIZE bytes, 4 at least; a name that needs more is cut. Returns 0 on success, 1
 * when MEDIATYPE is above 20, ID below 1, FOLDERNAME null or SIZE below 4, which leaves FOLDERNAME
 * alone.
 */
KOLUM_EXPORT int getSystemThumbFolderName(unsigned int mediaType, long id, int size,
                                          char* folderName);

/*
 * Empties FOLDER, relative to the data volume's root: removes it with everything in it and creates
 * it again. Returns 0, whatever came of that. Returns 1 and touches nothing when the data volume is
 * unknown, or when FOLDER is null, has a ".." in it, is the data volume itself, or makes a path of
 * more than 1023 bytes.
 */
KOLUM_EXPORT int removeSystemThumbnail(const char* folder);

/*
 * Writes the current time into STAMPFILE (one of the names above), relative to the data volume's
 * root: seconds since 1970-01-01 UTC, decimal digits and nothing else. The file is replaced.
 * Threads of this process take turns. Returns 0, also when the file could not be written.
 */
KOLUM_EXPORT int saveLastBuildTime(const char* stampFile);

KOLUM_C_END

#endif
