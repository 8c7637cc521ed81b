// The file name extensions that the media library knows.
//
// A row's position is the file type's identity: classification reports it, and exclusion masks and
// the configuration address it as a bit. Rows are never moved or removed; new ones go to the end.
// Extensions are in lower case, with their dot, at most kLongestExtension characters.
#include "filetype/tables.h"

#include <kolum/identifiers.h>

#include <iterator>

namespace kolum::filetype {

namespace {

// What a song's row implies about its content: codec, brand and format in one number.
constexpr std::uint64_t songIds(std::uint64_t format, std::uint64_t brand, std::uint64_t codec) {
  return codec << 32 | brand << 16 | format;
}

constexpr MediaFileInfo kTerminator = {nullptr, nullptr, 0, 0};

}  // namespace

// Hidden tables that the library itself reads. The exported names below are the same tables.
extern "C" {

extern const MediaFileInfo kVideoRows[] = {
    {".ifo", "video/dvdifo", 0, 0},
    {".bdmv", "video/bdmv", 0, 0},
    {".m2ts", "video/mpeg", 0, 0},
    {".avi", "video/x-msvideo", 0, 0},
    {".mpg", "video/mpeg", 0, 0},
    {".mp4", "video/mp4", 0, 0},
    {".wmv", "video/x-ms-wmv", 0, 0},
    {".ts", "video/mpeg", 0, 0},
    {".tts", "video/vnd.dlna.mpeg-tts", 0, 0},
    {".tp", "video/mpeg", 0, 0},
    {".asf", "video/x-ms-asf", 0, 0},
    {".m2t", "video/mpeg", 0, 0},
    {".mov", "video/quicktime", 0, 0},
    {".m2v", "video/mpeg", 0, 0},
    {".mpeg", "video/mpeg", 0, 0},
    {".3gp", "video/3gp", 0, 0},
    {".mkv", "video/x-matroska", 0, 0},
    {".mts", "video/mpeg", 0, 0},
    {".tod", "video/mpeg", 0, 0},
    {".mod", "video/mpeg", 0, 0},
    {".trp", "video/mpeg", 0, 0},
    {".m1v", "video/mpeg", 0, 0},
    {".m4v", "video/mp4", 0, 0},
    {".rmp4", "video/mp4", 0, 0},
    {".divx", "video/divx", 0, 0},
    {".flv", "video/x-flv", 0, 0},
    {".iso", "video/mpeg", 0, 0},
    {".rmvb", "video/vnd.rn-realvideo", 0, 0},
    {".rm", "video/vnd.rn-realvideo", 0, 0},
    {".mpv2", "video/mpeg", 0, 0},
    {".mp2v", "video/mpeg", 0, 0},
    {".insv", "video/mp4", 0, 0},
    {".f4v", "video/x-f4v", 0, 0},
    kTerminator,
};

// Some pairs look wrong but are what hosts store: ".dts" as WAV, ".mka" as MP3, AIFF as
// little-endian PCM.
extern const MediaFileInfo kMusicRows[] = {
    {".mp3", "audio/mpeg", songIds(FORMAT_MP3, 0, CODEC_ID_MP3), 0},
    {".aac", "audio/x-aac", songIds(FORMAT_AAC, 0, CODEC_ID_AAC), 1},
    {".wav", "audio/x-wav", songIds(FORMAT_WAV, 0, CODEC_ID_PCM_S16LE), 1},
    {".wma", "audio/x-ms-wma", songIds(FORMAT_ASF, 0, CODEC_ID_WMAV2), 0},
    {".flac", "audio/x-flac", songIds(FORMAT_FLAC, 0, CODEC_ID_FLAC), 0},
    {".ape", "audio/x-monkeys-audio", songIds(FORMAT_APE, 0, CODEC_ID_APE), 1},
    {".dts", "application/octet-stream", songIds(FORMAT_WAV, 0, CODEC_ID_DTS), 1},
    {".m4a", "audio/x-m4a", songIds(FORMAT_MPEG4, MPEG4_M4A, CODEC_ID_AAC), 0},
    {".ogg", "audio/ogg", songIds(FORMAT_OGG, 0, CODEC_ID_VORBIS), 0},
    {".ac3", "audio/ac3", songIds(FORMAT_AC3, 0, CODEC_ID_AC3), 1},
    {".aiff", "audio/x-aiff", songIds(FORMAT_AIFF, 0, CODEC_ID_PCM_S16LE), 1},
    {".au", "audio/basic", songIds(FORMAT_AU, 0, CODEC_ID_PCM_MULAW), 1},
    {".aif", "audio/x-aiff", songIds(FORMAT_AIFF, 0, CODEC_ID_PCM_S16LE), 1},
    {".m4r", "audio/x-m4a", songIds(FORMAT_MPEG4, MPEG4_M4A, CODEC_ID_AAC), 0},
    {".dsf", "audio/x-dsf", songIds(FORMAT_DSF, 0, CODEC_ID_DSD), 0},
    {".dff", "audio/x-dff", songIds(FORMAT_DFF, 0, CODEC_ID_DSD), 1},
    {".m4b", "audio/x-m4b", songIds(FORMAT_MPEG4, MPEG4_M4A, CODEC_ID_AAC), 0},
    {".mka", "audio/x-matroska", songIds(FORMAT_MKV, 0, CODEC_ID_MP3), 0},
    {".wv", "audio/x-wavpack", songIds(FORMAT_WV, 0, CODEC_ID_WAVPACK), 0},
    {".mpa", "audio/mpeg", songIds(FORMAT_MP3, 0, CODEC_ID_MP3), 0},
    {".ra", "audio/vnd.rn-realaudio", songIds(FORMAT_RA, 0, CODEC_ID_RA_144), 0},
    {".adts", "audio/vnd.dlna.adts", songIds(FORMAT_AAC, 0, CODEC_ID_AAC), 1},
    kTerminator,
};

extern const MediaFileInfo kPhotoRows[] = {
    {".jpeg", "image/jpeg", 1, 0},       {".jpe", "image/jpeg", 1, 0},
    {".jpg", "image/jpeg", 1, 0},        {".bmp", "image/bmp", 2, 0},
    {".gif", "image/gif", 3, 0},         {".png", "image/png", 4, 0},
    {".tif", "image/tiff", 5, 0},        {".tiff", "image/tiff", 5, 0},
    {".cr2", "image/x-canon-cr2", 6, 0}, {".crw", "image/x-canon-crw", 7, 0},
    {".arw", "image/sony", 8, 0},        {".sr2", "image/sony", 9, 0},
    {".dcr", "image/dcr", 10, 0},        {".kdc", "image/kdc", 11, 0},
    {".nef", "image/nef", 12, 0},        {".mrw", "image/mrw", 13, 0},
    {".pef", "image/pef", 14, 0},        {".raf", "image/raf", 15, 0},
    {".3fr", "image/3fr", 16, 0},        {".erf", "image/erf", 17, 0},
    {".mef", "image/mef", 18, 0},        {".mos", "image/mos", 19, 0},
    {".orf", "image/orf", 20, 0},        {".rw2", "image/rw2", 21, 0},
    {".dng", "image/dng", 22, 0},        {".x3f", "image/x3f", 23, 0},
    {".srf", "image/srf", 24, 0},        {".k25", "image/k25", 25, 0},
    {".ptx", "image/ptx", 26, 0},        {".tga", "image/x-tga", 27, 0},
    {".pdf", "application/pdf", 28, 0},  {".iiq", "image/iiq", 29, 0},
    {".insp", "image/jpeg", 1, 0},       kTerminator,
};

extern const MediaFileInfo kPlaylistRows[] = {
    {".m3u", "text/plain", 0, 0},
    {".pls", "text/plain", 0, 0},
    {".wpl", "application/vnd.ms-wpl", 0, 0},
    {".asx", "application/asx", 0, 0},
    kTerminator,
};

}  // extern "C"

static_assert(std::size(kVideoRows) == 34);
static_assert(std::size(kMusicRows) == 23);
static_assert(std::size(kPhotoRows) == 34);
static_assert(std::size(kPlaylistRows) == 5);

std::span<const MediaFileInfo> rowsOf(KindNumber kind) {
  static constexpr std::span<const MediaFileInfo> kTables[kKindCount] = {kMusicRows, kPhotoRows,
                                                                         kVideoRows, kPlaylistRows};
  return kTables[kind].first(kTables[kind].size() - 1);
}

}  // namespace kolum::filetype

#define KOLUM_PUBLISH(name, rows) \
  extern const MediaFileInfo name[std::size(kolum::filetype::rows)] __attribute__((alias(#rows)));

extern "C" {
KOLUM_PUBLISH(g_VideoFileInfo, kVideoRows)
KOLUM_PUBLISH(g_SongFileInfo, kMusicRows)
KOLUM_PUBLISH(g_PictureFileInfo, kPhotoRows)
KOLUM_PUBLISH(g_PlaylistFileInfo, kPlaylistRows)
}
