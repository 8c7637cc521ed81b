/*
 * Media info: the streams of a file as a player needs them, and the key frame to start from.
 *
 * Every function may be called from any thread. Messages of FFmpeg and of getVideoKeyFrameTime go
 * to standard error, as do the system's reasons for entries left out of a Blu-ray folder. See
 * <kolum/kolum.h> for what is read of a file.
 */
#ifndef KOLUM_MEDIAINFO_H
#define KOLUM_MEDIAINFO_H

#include <stdint.h>

#include <kolum/export.h>

KOLUM_C_BEGIN

struct AVStream;

/* The values of MediaStreamInfo's streamType. */
enum { MEDIA_STREAM_VIDEO = 0, MEDIA_STREAM_AUDIO = 1, MEDIA_STREAM_SUBTITLE = 2 };

/* One stream. Fields not listed for its type are 0. */
typedef struct MediaStreamInfo {
  unsigned int streamType; /* MEDIA_STREAM_* */
  /* FFmpeg's codec number in its classic numbering (H.264 is 28; not CODEC_ID_*), 0 for a codec
     that came after release 57. */
  unsigned int codecId;
  int streamId; /* the container's own number, such as the PID in a transport stream */
  int profile;  /* video: PROFILE_*; audio: 0, see bitRate */
  int level;    /* video and audio: FFmpeg's level number, or LEVEL_UNKNOWN */
  /* Video: bit/s, 0 unknown. Audio: the profile, a PROFILE_* number to be read as signed
     (PROFILE_UNKNOWN is -99). */
  unsigned int bitRate;
  unsigned int sampleRate;    /* audio: Hz */
  unsigned int bitsPerSample; /* audio: bits per coded sample, 0 unknown */
  unsigned int channels;      /* audio */
  unsigned int isDivx;        /* video: 1 for MPEG-4 tagged "XVID", "DX50" or "DIVX" in AVI */
  unsigned int reserved;
  int width;    /* video: pixels */
  int height;   /* video: pixels */
  int rotation; /* video: 90, 180, 270, else 0 */
  /* Video: frameRateNum divided by the denominator of the stream's time base, whole part. Not
     frames per second, but hosts calculate back from it. */
  int frameRate;
  int frameRateNum; /* video: the base frame rate */
  int frameRateDen;
} MediaStreamInfo;

/* A file. */
typedef struct MediaInfo {
  unsigned int bitRate;         /* bit/s of the whole file, the low 32 bits */
  unsigned int duration;        /* whole seconds, the low 32 bits; meaningless when unknown */
  unsigned int containerFormat; /* FORMAT_* of a video format without its brand, else 0 */
  unsigned int sourceKind;      /* FORMAT_DVDIFO, FORMAT_BDBDMV or, for a plain file, 0 */
  int streamCount;              /* entries of streams */
  MediaStreamInfo* streams;     /* video, audio and subtitle streams in the file's order */
} MediaInfo;

/*
 * Describes a file, or the main title of a DVD folder (PATH ends in "/VIDEO_TS.IFO") or a Blu-ray
 * folder ("/index.bdmv"). INFO receives a new record, to be freed with Free_MediaInfo. Returns 0,
 * or 1 with INFO set to null: a null argument, a path of more than 1023 characters, a disc image
 * ("*.iso"), a disc without a main title, no such file, not a media file, no streams, no memory.
 *
 * If SEEKSECONDS is at least 1 and KEYFRAMETIME is not null, KEYFRAMETIME receives the time in
 * seconds of the key frame from which to play the first video stream at SEEKSECONDS, or SEEKSECONDS
 * itself when none is found: no decoder, beyond the end, no key frame among the 3600 packets (of
 * all streams) from there. The time counts from the stream's start. Without a video stream, and on
 * failure, KEYFRAMETIME stays untouched.
 *
 * Which key frame that is depends on the container, because the search does not ask FFmpeg for a
 * direction: see docs/seeking.md. It is usually the first one at or after SEEKSECONDS.
 */
KOLUM_EXPORT unsigned int GetMediaInfo(const char* path, MediaInfo** info, int64_t seekSeconds,
                                       double* keyFrameTime);

/* Frees a record with its streams; null is ignored. */
KOLUM_EXPORT void Free_MediaInfo(MediaInfo* info);

/*
 * The key-frame search alone, on a file or a URL; faster, because it skips reading the stream
 * information. Of paths that exist, only files and block devices are opened: a pipe could block.
 * KEYFRAMETIME receives the time in seconds, from the stream's start, of the key frame from which
 * to play at SECONDS. Returns 0, or 1 with KEYFRAMETIME untouched and, in most cases, a line on
 * standard error: a null argument or negative SECONDS, URL cannot be opened, the first video stream
 * cannot be decoded or sought in, no key frame before the end or among its next 3600 packets (of
 * that stream only).
 *
 * SECONDS in units of the stream's time base wraps to a signed 32-bit number: with a time base of
 * 1/90000 s, times beyond 23860 s lead elsewhere. GetMediaInfo has no such limit.
 */
KOLUM_EXPORT unsigned int getVideoKeyFrameTime(const char* url, int seconds, double* keyFrameTime);

/*
 * The time stamp, in the time base of STREAM, that is SECONDS after the time stamp STARTPTS. 64-bit
 * arithmetic that wraps; fractions of a unit are cut off. Returns STARTPTS when STREAM is null or
 * has no time base.
 */
KOLUM_EXPORT int64_t ElapseTimeToPts(struct AVStream* stream, int64_t startPts, int64_t seconds);

KOLUM_C_END

#endif
