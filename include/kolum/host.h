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
 * printf's. None of the pointers is kept, and errno stays as it was. The stand-in writes one line
 * to standard error, in one piece, when the environment variable KO_LOG_LEVEL is at least LEVEL
 * (unset and what is no number count as 0): closing line ends are dropped, inner ones become
 * spaces, and a coloured line ends with the colour reset.
 */
KOLUM_EXPORT void koDebugUtilWrapperPrint(int level, const char* colour, const char* source,
                                          int line, const char* function, const char* format, ...)
    __attribute__((format(printf, 6, 7)));

/*
 * Runs ARGV[0] (looked up in PATH when it holds no "/") with the null-terminated argument list
 * ARGV, without a shell, and waits for it. The meaning of WAIT is the host's: libkolum passes 0 and
 * 1 and expects the program to have ended in both cases. Returns its exit status (0 to 255), or -1
 * when ARGV is null or empty, the program could not be started or was ended by a signal, or its
 * status is lost because the process ignores SIGCHLD. The arguments are handed over untouched.
 */
KOLUM_EXPORT int KoUtil_ExecSync(const char** argv, int wait);

/* Non-zero when PATH exists, whatever it is; a link that leads nowhere does not. */
KOLUM_EXPORT int KoUtil_IsFileExist(const char* path);

/* Non-zero when PATH exists and is a folder. */
KOLUM_EXPORT int isFolderExist(const char* path);

/*
 * Creates the folder PATH and every missing folder above it, with all rights that the process's
 * umask leaves. Returns 0 when the folder exists afterwards, else -1 (null, empty, a file in the
 * way, no right to).
 */
KOLUM_EXPORT int komkdir(const char* path);

/*
 * Removes the file or the whole folder tree PATH; links are removed, never followed, also when PATH
 * itself is one with a closing "/". Returns 0 on success, -1 when something could not be removed
 * (part of the tree may be gone then), when PATH does not exist, is null or empty, or is "/".
 */
KOLUM_EXPORT int koremove2(const char* path);

/*
 * Writes the lower-case, file-name-safe form of the text at SRC (at most SRCLENGTH bytes, UTF-8)
 * into DST, which holds DSTSIZE bytes with the terminator: letters of all scripts in lower case;
 * control characters, "/", other characters that file systems or quoted shell words cannot hold,
 * and bytes that are no UTF-8 as "_"; cut between characters to fit. The result is never "." or
 * "..", nor does it begin with "@_", as album source pictures do: their first character becomes
 * "_". Returns 0, or -1 when an argument is null, there is no text, or DSTSIZE holds no character;
 * DST is untouched then.
 */
KOLUM_EXPORT int StringConvert2LowerFileString(const char* src, int srcLength, char* dst,
                                               int dstSize);

/*
 * Rewrites PATH in place so that a shell reads it back as the one word it was. The caller's buffer
 * has room for four times the length of PATH, two quotes and the terminator. Any bytes are allowed.
 * Null and the empty text stay as they are (an empty word has no form that takes no room).
 */
KOLUM_EXPORT void StringConvert2SystemCmdFilename(char* path);

/*
 * The main title of the DVD structure in FOLDER (the folder of the IFO files or its parent; a
 * closing "/" is allowed). Writes the path of the title's first video file into PATHOUT
 * (PATHOUTSIZE bytes with the terminator; it begins with FOLDER as given) and the size in bytes of
 * all its video files into TITLESIZE (may be null). libkolum passes 0 for both reserved arguments.
 * Returns 0 on success, non-zero when no title is found, the path does not fit, or FOLDER or
 * PATHOUT is null; both outputs are untouched then.
 *
 * The stand-in takes the title set with the longest program chain, the larger of two that play
 * equally long. Names on disk may be in any case, and only video files with content count. A title
 * set whose IFO file cannot be read counts as playing for no time; when none can be, the largest
 * title set wins.
 */
KOLUM_EXPORT int DVDGetMainVTSNo(const char* folder, char* pathOut, int pathOutSize, int reserved1,
                                 long long* titleSize, int reserved2);

/* Non-zero when YEAR is a leap year of the Gregorian calendar, carried back before its beginning.
 */
KOLUM_EXPORT int IsLeapYear(int year);

KOLUM_C_END

#ifdef __cplusplus
/*
 * Puts the data volume's mount path, without a closing "/", into DIR; empty when unknown. The
 * stand-in takes it from the environment variable KO_DATA_DIR; the root folder stays "/". C++
 * linkage, as its argument is a C++ type.
 */
KOLUM_EXPORT void KoUtil_GetDataDir(std::string& dir);
#endif

#endif
