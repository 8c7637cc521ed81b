/*
 * Video: the video record and its probe, the flat entry points, disc folders, MP4 boxes and the
 * quick stream queries.
 *
 * Every function may be called from any thread. Paths are bytes, not text: any byte but NUL may
 * occur in them. Folder names end with "/"; folder and name together make the path, of which at
 * most 1023 characters count.
 *
 * The probes print: naming H.264 in MP4 for DLNA writes debug lines to standard output, and a
 * transport stream or a disc folder that cannot be read gives the system's reason on standard
 * error. See <kolum/kolum.h> for other output there, and for what is read of a file.
 */
#ifndef KOLUM_VIDEO_H
#define KOLUM_VIDEO_H

#include <stdint.h>

#include <kolum/export.h>

KOLUM_C_BEGIN

/* Audio classes that DLNA names depend on (docs/dlna.md). */
enum {
  AUDIO_CLASS_NONE = 0, /* no audio, or of no class */
  AUDIO_CLASS_MP3 = 1,
  AUDIO_CLASS_AC3 = 2,      /* also DTS */
  AUDIO_CLASS_WMA_BASE = 3, /* WMA up to 193 kbit/s */
  AUDIO_CLASS_WMA_FULL = 4, /* WMA up to 385 kbit/s */
  AUDIO_CLASS_WMA_PRO = 5,
  AUDIO_CLASS_MP2 = 6,
  AUDIO_CLASS_PCM = 7,
  AUDIO_CLASS_AAC_STEREO = 8,       /* AAC-LC */
  AUDIO_CLASS_AAC_MULTICHANNEL = 9, /* AAC-LC */
  AUDIO_CLASS_AMR = 10,
  AUDIO_CLASS_AAC_OTHER = 0x15002 /* other AAC: the number of its codec */
};

/* How a picture is rotated. */
enum {
  VIDEO_ORIENTATION_UPRIGHT = 1, /* reported by the flat probes only */
  VIDEO_ORIENTATION_180 = 3,     /* rotated by 180 degrees */
  VIDEO_ORIENTATION_270 = 6,     /* rotated by 270 degrees */
  VIDEO_ORIENTATION_90 = 8       /* rotated by 90 degrees */
};

/* The subtitleMode of the flat probes. */
enum {
  SUBTITLE_MODE_FILE = 0,  /* a file (not a disc) with a subtitle stream */
  SUBTITLE_MODE_OTHER = 16 /* everything else; the preset */
};

/* Where a file's "moov" box is (CheckMp4MoovAtEnd). */
enum {
  MP4_MOOV_NOT_LAST = 0,  /* players can start at once */
  MP4_MOOV_LAST = 1,      /* or there is a box of unknown type */
  MP4_MOOV_UNREADABLE = 2 /* the file cannot be read */
};

/* Sizes of MPEG transport packets in bytes (ProbeTsPacketSize). */
enum {
  TS_PACKET_NONE = 0, /* not a transport stream */
  TS_PACKET_PLAIN = 188,
  TS_PACKET_STAMPED = 192 /* with a time stamp in front */
};

/*
 * What the video probe finds out about a file. The caller must clear it before the call: the probe
 * clears only the text fields and creationYear, and a number without a value keeps what the caller
 * put there. The four aspect fields are written only when all four are non-zero on entry.
 */
typedef struct videoObject_st {
  char yearMonth[8];            /* creation year and month, "2015-06" */
  char creationDate[12];        /* creation date, "2015-06-07" */
  int creationYear;             /* set from the QuickTime creation date only, else 0 */
  char mimeType[96];            /* "video/mp4"; empty when nothing is known */
  char dlnaProfile[128];        /* DLNA media format profile; empty when there is none */
  int duration;                 /* whole seconds */
  int width;                    /* pixels, of the largest video stream */
  int height;                   /* pixels */
  unsigned int videoBitRate;    /* bit/s; 0 when unknown */
  unsigned int sampleRate;      /* Hz, of the chosen audio stream */
  unsigned int bitsPerSample;   /* bits per coded sample */
  unsigned int channels;        /* audio channels */
  unsigned int playException;   /* PLAY_EXCEPTION_*, else untouched */
  unsigned int containerFormat; /* FORMAT_* in the low 16 bits, MPEG4_* in the high 16 */
  int videoCodec;               /* CODEC_ID_* */
  int videoProfile;             /* PROFILE_* */
  int videoLevel;               /* FFmpeg's level number, or LEVEL_UNKNOWN */
  int audioCodec;               /* CODEC_ID_* */
  int audioProfile;             /* PROFILE_* */
  unsigned int audioClass;      /* AUDIO_CLASS_* */
  int audioLevel;               /* FFmpeg's level number, or LEVEL_UNKNOWN */
  unsigned int audioBitRate;    /* bit/s; 0 when unknown */
  int64_t creationTime;         /* seconds since 1970 */
  unsigned int orientation;     /* VIDEO_ORIENTATION_* when rotated, else untouched */
  unsigned int subtitleCount;   /* subtitle streams of DVD and Blu-ray folders, else 0 */
  unsigned int is360;           /* 1 for equirectangular video, else untouched */
  unsigned int bitRate;         /* bit/s of the whole file */
  double frameRate;             /* frames per second */
  int sampleAspectNum;          /* shape of a pixel; see above */
  int sampleAspectDen;
  int displayAspectNum; /* shape of the picture, in lowest terms */
  int displayAspectDen;
  char contentIdentifier[64]; /* QuickTime content identifier, of ".mov" files only */
} videoObject_st;

/*
 * The four quick stream queries. Each returns 0 on success, and 1 with the output untouched on
 * failure (null path or output, no such file, not a media file, no streams).
 */

/*
 * The rotation of the first video stream in degrees, as stored (usually 90, 180 or 270, but any
 * number is possible). Success leaves DEGREES untouched when the stream stores none, so preset it
 * with 0. Files without a video stream and paths longer than 1023 characters are failures.
 */
KOLUM_EXPORT unsigned int GetVideoRotationDegree(const char* folder, const char* fileName,
                                                 unsigned int* degrees);

/* ISPROTECTED is set to 1 when a stream is marked as encrypted ("drmi", "drms"), else 0. */
KOLUM_EXPORT unsigned int GetDRMProtectedInfo(const char* path, unsigned int* isProtected);

/* The number of audio streams. */
KOLUM_EXPORT unsigned int GetAudioTrack(const char* path, unsigned int* count);

/* The number of subtitle streams. */
KOLUM_EXPORT unsigned int GetSubtitleTrack(const char* path, unsigned int* count);

/*
 * Finds the layout of a file's MPEG transport packets from its first 576 bytes: PACKETSIZE receives
 * TS_PACKET_*. Returns 1 when the packets are 192 bytes long and a time stamp is not zero, else 0.
 * A file that cannot be opened or is shorter also returns 1, with the system's reason on standard
 * error and PACKETSIZE untouched.
 */
KOLUM_EXPORT int ProbeTsPacketSize(const char* path, unsigned int* packetSize);

/*
 * Finds the largest regular file of a folder whose suffix begins with EXT (".m2ts"; letter case
 * does not count); among equals the last in the folder's own order. DIR is a buffer of 1024 bytes:
 * the folder with its trailing "/" on entry, the file's path on return, or empty when there is
 * none, the folder cannot be read, or the path would not fit. An entry whose size cannot be read is
 * left out, with the system's reason on standard error.
 */
KOLUM_EXPORT void get_maxsizefilename(char* dir, const char* ext);

/*
 * The MPEG-4 sub-format of a file by its major brand and box order. SUBFORMAT receives an MPEG4_*
 * code, 0 for an unknown brand. Returns 0 when a brand was read, else 1 with SUBFORMAT 0: the file
 * cannot be read, is shorter than 64 bytes, or has no "ftyp" in them. Also returns 1 when SUBFORMAT
 * is null.
 */
KOLUM_EXPORT int GetMp4SubFormat(const char* path, unsigned int* subFormat);

/*
 * Whether the "moov" box is last among a file's top-level boxes. Returns MP4_MOOV_*.
 */
KOLUM_EXPORT int CheckMp4MoovAtEnd(const char* path);

/*
 * The flat probes: like GetVideoMetadata1 with a record, but each value in a separate variable. All
 * return 0 on success and 1 on failure. Null outputs are skipped; outputs not reached keep what the
 * caller put there, except for these presets: orientation VIDEO_ORIENTATION_UPRIGHT, subtitleMode
 * SUBTITLE_MODE_OTHER, subtitleCount 0, is360 0.
 * Text outputs are buffers of the sizes of the record's fields: mimeType 96 bytes, dlnaProfile 128,
 * yearMonth 8, creationDate 12. They are not cleared: dlnaProfile, for example, keeps its content
 * if the file has no DLNA profile, so callers should empty them first.
 *
 * Differences from the record: disc images are mounted and their main title is probed; subtitle
 * streams are counted for every file, and subtitleMode becomes SUBTITLE_MODE_FILE for a file (not a
 * disc) that has one; creationTime becomes 0 when the stream has none; QuickTime's own entries are
 * not read.
 */

/*
 * The flat probe with every output. AUDIOSTREAMINDEX counts the audio streams only; an index that
 * does not exist means the first. The four aspect outputs are written only when all are given.
 */
KOLUM_EXPORT unsigned int GetVideoMetadata3(
    const char* folder, const char* fileName, int* width, int* height, int* bitRate,
    int* videoBitRate, int* audioBitRate, int* sampleRate, int* bitsPerSample, int* channels,
    int* duration, int* playException, char* mimeType, char* dlnaProfile, int* containerFormat,
    int* videoCodec, int* videoProfile, int* videoLevel, int* audioCodec, int* audioProfile,
    int* audioLevel, int* orientation, int* subtitleMode, int* subtitleCount, char* yearMonth,
    char* creationDate, int64_t* creationTime, int audioStreamIndex, double* frameRate,
    int* sampleAspectNum, int* sampleAspectDen, int* displayAspectNum, int* displayAspectDen,
    int* is360);

/* GetVideoMetadata3 without subtitleCount and is360. */
KOLUM_EXPORT unsigned int GetVideoMetadata2(
    const char* folder, const char* fileName, int* width, int* height, int* bitRate,
    int* videoBitRate, int* audioBitRate, int* sampleRate, int* bitsPerSample, int* channels,
    int* duration, int* playException, char* mimeType, char* dlnaProfile, int* containerFormat,
    int* videoCodec, int* videoProfile, int* videoLevel, int* audioCodec, int* audioProfile,
    int* audioLevel, int* orientation, int* subtitleMode, char* yearMonth, char* creationDate,
    int64_t* creationTime, int audioStreamIndex, double* frameRate, int* sampleAspectNum,
    int* sampleAspectDen, int* displayAspectNum, int* displayAspectDen);

/* GetVideoMetadata2 for the first audio stream, without frame rate and aspect. */
KOLUM_EXPORT unsigned int GetVideoMetadata(const char* folder, const char* fileName, int* width,
                                           int* height, int* bitRate, int* videoBitRate,
                                           int* audioBitRate, int* sampleRate, int* bitsPerSample,
                                           int* channels, int* duration, int* playException,
                                           char* mimeType, char* dlnaProfile, int* containerFormat,
                                           int* videoCodec, int* videoProfile, int* videoLevel,
                                           int* audioCodec, int* audioProfile, int* audioLevel,
                                           int* orientation, int* subtitleMode, char* yearMonth,
                                           char* creationDate, int64_t* creationTime);

KOLUM_C_END

#ifdef __cplusplus

/*
 * Probes a video file, a DVD folder (FILENAME "VIDEO_TS.IFO"), a Blu-ray folder ("index.bdmv") or a
 * disc image ("*.iso": mounted only to find out its kind) into RECORD. AUDIOSTREAMINDEX counts the
 * audio streams only; an index that does not exist means the first. Returns 0 on success. Returns 1
 * when an argument is null (RECORD is untouched then), the file does not exist or is not media, has
 * no video stream or one of an unknown codec, or a disc has no main title; fields filled before the
 * failure stay filled.
 */
KOLUM_EXPORT unsigned int GetVideoMetadata1(const char* folder, const char* fileName,
                                            videoObject_st* record, int audioStreamIndex);

/* GetVideoMetadata3 for the first audio stream, without frame rate and aspect. */
KOLUM_EXPORT unsigned int GetVideoMetadata1(
    const char* folder, const char* fileName, int* width, int* height, int* bitRate,
    int* videoBitRate, int* audioBitRate, int* sampleRate, int* bitsPerSample, int* channels,
    int* duration, int* playException, char* mimeType, char* dlnaProfile, int* containerFormat,
    int* videoCodec, int* videoProfile, int* videoLevel, int* audioCodec, int* audioProfile,
    int* audioLevel, int* orientation, int* subtitleMode, int* subtitleCount, char* yearMonth,
    char* creationDate, int64_t* creationTime, int* is360);

#endif

#endif
