/*
 * What a host process supplies to libkolum.
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
 * The host's debug log. LEVEL runs from 0 to 7 (libkolum always passes 5); COLOUR is a terminal
 * escape that colours the line, or null; SOURCE, LINE and FUNCTION name the place; FORMAT is
 * printf's. None of the pointers is kept.
 */
KOLUM_EXPORT void koDebugUtilWrapperPrint(int level, const char* colour, const char* source,
                                          int line, const char* function, const char* format, ...)
    __attribute__((format(printf, 6, 7)));

/*
 * Runs ARGV[0] with the null-terminated argument list ARGV, without a shell. WAIT is the host's;
 * both 0 and 1 wait for the program here. Returns its exit status, or -1 when it could not be
 * started or was ended by a signal.
 */
KOLUM_EXPORT int KoUtil_ExecSync(const char** argv, int wait);

/* Non-zero when PATH exists, whatever it is. */
KOLUM_EXPORT int KoUtil_IsFileExist(const char* path);

/* Non-zero when PATH exists and is a folder. */
KOLUM_EXPORT int isFolderExist(const char* path);

/* Creates the folder PATH. Returns 0 on success. */
KOLUM_EXPORT int komkdir(const char* path);

/* Removes the file or the whole folder tree PATH. Returns 0 on success. */
KOLUM_EXPORT int koremove2(const char* path);

/*
 * Writes the lower-case, file-name-safe form of the SRCLENGTH bytes at SRC into DST, which holds
 * DSTSIZE bytes with the terminator. Returns -1 on failure.
 */
KOLUM_EXPORT int StringConvert2LowerFileString(const char* src, int srcLength, char* dst,
                                               int dstSize);

/*
 * Rewrites PATH in place so that a shell reads it back as the one word it was. The result takes at
 * most three times the length of PATH; the caller's buffer has room for it and the terminator.
 */
KOLUM_EXPORT void StringConvert2SystemCmdFilename(char* path);

/*
 * The main title of the DVD structure in FOLDER (the folder of the IFO files or its parent; a
 * closing "/" is allowed). Writes the path of the title's first video file into PATHOUT (PATHOUTSIZE
 * bytes with the terminator) and the size in bytes of all its video files into TITLESIZE (may be
 * null). libkolum passes 0 for both reserved arguments. Returns 0 on success, non-zero when no title
 * is found, both outputs then untouched.
 */
KOLUM_EXPORT int DVDGetMainVTSNo(const char* folder, char* pathOut, int pathOutSize, int reserved1,
                                 long long* titleSize, int reserved2);

/* Non-zero when YEAR is a leap year of the Gregorian calendar. */
KOLUM_EXPORT int IsLeapYear(int year);

#ifdef __cplusplus
/* Puts the data volume's mount path, without a closing "/", into DIR; empty when unknown. */
KOLUM_EXPORT void KoUtil_GetDataDir(std::string& dir);
#endif

KOLUM_C_END

#endif
