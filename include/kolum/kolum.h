/*
 * libkolum, the media library's per-file worker: the whole interface.
 *
 * Each family of functions has its own header. <kolum/host.h> lists what a host process must
 * supply.
 *
 * Standard output and standard error: the library writes to both of them, in the host's process. A
 * host that speaks a protocol there should keep a duplicate of the descriptor for itself and
 * redirect the standard one.
 *
 *   Standard output, through stdio's stdout:
 *     the video probes and ExplainDlnaProfile   debug lines on naming H.264 in MP4
 *     GetDsfMetadata*, and GetAudioMetadata
 *     of a DSD file                             "error" when the external program cannot be run
 *     KoLUM_PrintFileExtList, dumpHashTable     their result
 *   Standard error:
 *     GetAudioMetadata, getVideoKeyFrameTime    "[MediaInfo:line]" lines
 *     functions that read Blu-ray folders or
 *     transport packets                         the system's reason for a failure
 *     functions that open media                 FFmpeg's own messages, filtered by the host's
 *                                               av_log_set_level()
 *     ExecCommand and its callers, when the
 *     host's log goes there                     a line from the child before the program starts
 *
 * What is read of a file: its headers, its tags and the packets at its beginning and end; never
 * another file that it names. Pictures are decoded only where no header says what they are, and
 * only up to 16 million pixels. Only containers and codecs of media libraries are read at all;
 * other files count as no media. A call reads at most 1 GiB and takes at most 10 s of processor
 * time and 60 s in all (not counting programs that it runs): then reading ends as at the end of the
 * file, and what was found counts. What some hostile files make FFmpeg allocate, only a process of
 * their own can limit; docs/architecture.md names these.
 *
 * Programs that the library runs (mount, umount, dsf2flac, osm_info, ffmpeg, convert, setcfg, ...)
 * inherit standard error, and standard output unless the library reads it. All other messages go
 * through the host's koDebugUtilWrapperPrint.
 */
#ifndef KOLUM_KOLUM_H
#define KOLUM_KOLUM_H

#include <kolum/audio.h>
#include <kolum/config.h>
#include <kolum/datetime.h>
#include <kolum/describe.h>
#include <kolum/dlna.h>
#include <kolum/export.h>
#include <kolum/filetype.h>
#include <kolum/frame.h>
#include <kolum/geocode.h>
#include <kolum/host.h>
#include <kolum/identifiers.h>
#include <kolum/isolation.h>
#include <kolum/mediainfo.h>
#include <kolum/photo.h>
#include <kolum/server.h>
#include <kolum/socket.h>
#include <kolum/thumbnail.h>
#include <kolum/video.h>

#endif
