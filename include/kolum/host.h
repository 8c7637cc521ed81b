/*
 * The functions that a host process supplies to libkolum.
 *
 * libkolum calls these functions and defines none of them: an appliance links its own utility
 * library, everybody else the complete stand-in libkohost.so (folder host/). All of them may be
 * called from any thread.
 */
#ifndef KOLUM_HOST_H
#define KOLUM_HOST_H

#ifdef __cplusplus
#include <string>
#endif

#include <kolum/export.h>

KOLUM_C_BEGIN

/*
 * The host's debug log. LEVEL ranges from 0 to 7 (libkolum always passes 5); COLOUR is a terminal
 * escape sequence that colours the line, or null; SOURCE, LINE and FUNCTION name the place; FORMAT
 * is printf's. None of the pointers is kept, and errno is preserved. The stand-in writes one line
 * to standard error, with a single write, when the environment variable KO_LOG_LEVEL is at least
 * LEVEL (unset and non-numeric values count as 0): trailing line ends are dropped, inner ones
 * become spaces, and a coloured line ends with the colour reset.
 */
KOLUM_EXPORT void koDebugUtilWrapperPrint(int level, const char* colour, const char* source,
                                          int line, const char* function, const char* format, ...)
    __attribute__((format(printf, 6, 7)));

/*
 * Runs ARGV[0] (looked up in PATH when it contains no "/") with the null-terminated argument list
 * ARGV, without a shell, and waits for it. The host defines the meaning of WAIT: libkolum passes 0
 * and 1 and expects the program to have ended in both cases. Returns its exit status (0 to 255), or
 * -1 when ARGV is null or empty, the program could not be started or was ended by a signal, or its
 * status is lost because the process ignores SIGCHLD. The arguments are passed on unchanged.
 */
KOLUM_EXPORT int KoUtil_ExecSync(const char** argv, int wait);

/* Non-zero when PATH exists, whatever its type; a dangling link does not. */
KOLUM_EXPORT int KoUtil_IsFileExist(const char* path);

/* Non-zero when PATH exists and is a folder. */
KOLUM_EXPORT int isFolderExist(const char* path);

/*
 * Creates the folder PATH and every missing folder above it, with all permissions that the
 * process's umask leaves. Returns 0 when the folder exists afterwards, else -1 (null, empty, a file
 * in the way, no permission).
 */
KOLUM_EXPORT int komkdir(const char* path);

/*
 * Removes the file or the whole folder tree PATH. Links are removed, never followed, even if PATH
 * itself is one with a trailing "/". Returns 0 on success, -1 when something could not be removed
 * (part of the tree may be gone then), when PATH does not exist, is null or empty, or is "/".
 */
KOLUM_EXPORT int koremove2(const char* path);

/*
 * Writes the lower-case, file-name-safe form of the text at SRC (at most SRCLENGTH bytes, UTF-8)
 * into DST, which holds DSTSIZE bytes including the terminator. Letters of all scripts become lower
 * case; control characters, "/", other characters that file systems or quoted shell words cannot
 * hold, and bytes that are not UTF-8 become "_"; the text is cut between characters to fit. The
 * result is never "." or "..", nor does it begin with "@_", as album source pictures do: the first
 * character of such a result becomes "_". Returns 0, or -1 with DST untouched when an argument is
 * null, there is no text, or DSTSIZE has no room for a character.
 */
KOLUM_EXPORT int StringConvert2LowerFileString(const char* src, int srcLength, char* dst,
                                               int dstSize);

/*
 * Rewrites PATH in place so that a shell reads it back as the same single word. The caller's buffer
 * must have room for four times the length of PATH, two quotes and the terminator. Any bytes are
 * allowed. Null and the empty text stay unchanged.
 */
KOLUM_EXPORT void StringConvert2SystemCmdFilename(char* path);

/*
 * The main title of the DVD structure in FOLDER (the folder of the IFO files or its parent; a
 * trailing "/" is allowed). Writes the path of the title's first video file into PATHOUT
 * (PATHOUTSIZE bytes including the terminator; it begins with FOLDER as given) and the total size
 * in bytes of its video files into TITLESIZE (may be null). libkolum passes 0 for both reserved
 * arguments. Returns 0 on success, non-zero with both outputs untouched when no title is found, the
 * path does not fit, or FOLDER or PATHOUT is null.
 *
 * The stand-in picks the title set with the longest program chain, or the larger of two that play
 * equally long. Names on disk may be in any letter case, and only video files with content count. A
 * title set whose IFO file cannot be read counts as having no playing time; if none can be read,
 * the largest title set wins.
 */
KOLUM_EXPORT int DVDGetMainVTSNo(const char* folder, char* pathOut, int pathOutSize, int reserved1,
                                 long long* titleSize, int reserved2);

/* Non-zero when YEAR is a leap year of the proleptic Gregorian calendar. */
KOLUM_EXPORT int IsLeapYear(int year);

KOLUM_C_END

#ifdef __cplusplus
/*
 * Sets DIR to the data volume's mount path without a trailing "/", or to an empty text when it is
 * unknown. The stand-in takes it from the environment variable KO_DATA_DIR; the root folder stays
 * "/". It has C++ linkage because its argument is a C++ type.
 */
KOLUM_EXPORT void KoUtil_GetDataDir(std::string& dir);
#endif

#endif
