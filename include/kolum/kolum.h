/*
 * libkolum, the media library's per-file worker: everything it offers.
 *
 * Each family has its own header. What a host process must supply is in <kolum/host.h>.
 *
 * Standard output and standard error. The library writes to both of them, in the host's process: a
 * host that speaks a protocol there keeps a copy of the descriptor for itself and points the
 * standard one elsewhere.
 *
 *   Standard output, through stdio's stdout:
 *     the video probes and ExplainDlnaProfile   debug lines of the naming of H.264 in MP4
 *     GetDsfMetadata*, and GetAudioMetadata
 *     of a DSD file                             "error" when the external program cannot be run
 *     KoLUM_PrintFileExtList, dumpHashTable     their answer
 *   Standard error:
 *     GetAudioMetadata, getVideoKeyFrameTime    "[MediaInfo:line]" lines
 *     what looks into a Blu-ray folder or at
 *     transport packets                         the system's reason for a failure
 *     whatever opens media                      FFmpeg's own messages, as far as the host's
 *                                               av_log_set_level() lets them through
 *     ExecCommand and its callers, when the
 *     host's log goes there                     a line in the child before the program begins
 *
 * Programs that the library runs (mount, umount, dsf2flac, osm_info, ffmpeg, convert, setcfg, ...)
 * inherit standard error, and standard output where it is not read. Everything else goes through
 * the host's koDebugUtilWrapperPrint.
 */
#ifndef KOLUM_KOLUM_H
#define KOLUM_KOLUM_H

#include <kolum/audio.h>
#include <kolum/config.h>
#include <kolum/datetime.h>
#include <kolum/dlna.h>
#include <kolum/export.h>
#include <kolum/filetype.h>
#include <kolum/frame.h>
#include <kolum/geocode.h>
#include <kolum/host.h>
#include <kolum/identifiers.h>
#include <kolum/mediainfo.h>
#include <kolum/photo.h>
#include <kolum/server.h>
#include <kolum/socket.h>
#include <kolum/thumbnail.h>
#include <kolum/video.h>

#endif
