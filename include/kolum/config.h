/*
 * The media-library server's configuration.
 *
 * It is stored in "/.system/lumserver.conf" below the host's data volume, except for one key in
 * "/etc/config/medialibrary.conf". Nothing is cached. The files are written only by the appliance's
 * tool "/sbin/setcfg". docs/configuration.md lists every key. Both functions may be called from any
 * thread; nothing throws.
 */
#ifndef KOLUM_CONFIG_H
#define KOLUM_CONFIG_H

#include <kolum/export.h>

#ifdef __cplusplus

#include <string>
#include <vector>

/* The whole configuration; every number is 32-bit. */
struct lumCfg_s {
  bool enable;           /* KOLUMSERVER:ENABLE, default true */
  int mode;              /* KOLUMSERVER:MODE, 1 to 3, default 1 */
  int thumbStatus;       /* KOLUMSERVER:THUMB_STATUS, 1 to 4, default 1 */
  int faceStatus;        /* KOLUMSERVER:FACE_STATUS, 1 to 4, default 1 */
  int imgClassifyStatus; /* KOLUMSERVER:IMGCLASSIFY_STATUS, 1 to 4, default 1 */
  int deviceType;        /* PelmoCore:DeviceType of medialibrary.conf, 0 or 1, default 0 */
  int startWorkday;      /* KOLUMSERVER:STARTWORKDAY, any number, default 0 */
  int endWorkday;        /* KOLUMSERVER:ENDWORKDAY, any number, default 6 */
  int dailyBuildHH;      /* KOLUMSERVER:DAILYBUILD_HH, hour 0 to 23, default 0 */
  int dailyBuildMM;      /* KOLUMSERVER:DAILYBUILD_MM, minute 0 to 59, default 0 */
  int dailyBuildEndHH; /* KOLUMSERVER:DAILYBUILD_END_HH, hour 0 to 23 or -1 (not set), default -1 */
  int dailyBuildEndMM; /* KOLUMSERVER:DAILYBUILD_END_MM, minute 0 to 59 or -1, default -1 */
  std::string mcVersion; /* KOLUMSERVER:MC_VERSION, default "na" */
  bool enable4K;         /* THUMBNAIL:ENABLE4K, default true */
  int minWidth;          /* THUMBNAIL:MIN_WIDTH in pixels, 100 or more, default 400 */
  int minHeight;         /* THUMBNAIL:MIN_HEIGHT in pixels, 100 or more, default 400 */
  int quality;           /* THUMBNAIL:QUALITY, 1 to 3, default 2 */
  std::vector<std::string> photoBlacklist; /* THUMBNAIL:PHOTO_BLACKLIST, entries separated by ":" */
  std::vector<std::string> musicBlacklist; /* THUMBNAIL:MUSIC_BLACKLIST, likewise */
  std::vector<std::string> videoBlacklist; /* THUMBNAIL:VIDEO_BLACKLIST, likewise */
};

/*
 * Fills CFG from both files, with the defaults for keys that are absent, and checks the numbers.
 *
 * A thumbnail width or height below 100 is set to 400 in the file but still counts as invalid in
 * this call; the next call reads the repaired value.
 *
 * Returns 0 when CFG is filled and valid. Returns 1 when CFG is null, the data volume is unknown, a
 * file cannot be read, or a number is out of range; CFG (if given) then holds the defaults and
 * everything read so far.
 */
KOLUM_EXPORT int parseConfig(lumCfg_s* cfg) noexcept;

/*
 * Sets KEY of SECTION to VALUE in the data volume's "/.system/lumserver.conf", which is created if
 * it is missing.
 *
 * Returns 0 on success; 1 when the file cannot be prepared (data volume unknown, its path longer
 * than 221 bytes, file cannot be created); otherwise what the host's KoUtil_ExecSync returned for
 * "/sbin/setcfg".
 */
KOLUM_EXPORT int updateConfig(std::string section, std::string key, std::string value) noexcept;

#endif

#endif
