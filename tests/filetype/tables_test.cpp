#include <gtest/gtest.h>
#include <kolum/filetype.h>

#include <cstring>
#include <iterator>
#include <set>
#include <span>
#include <string>

namespace {

struct Row {
  const char* extension;
  const char* mimeType;
  std::uint64_t formatIds = 0;
  std::uint64_t flag = 0;
};

const Row kVideos[] = {
    {".ifo", "video/dvdifo"},
    {".bdmv", "video/bdmv"},
    {".m2ts", "video/mpeg"},
    {".avi", "video/x-msvideo"},
    {".mpg", "video/mpeg"},
    {".mp4", "video/mp4"},
    {".wmv", "video/x-ms-wmv"},
    {".ts", "video/mpeg"},
    {".tts", "video/vnd.dlna.mpeg-tts"},
    {".tp", "video/mpeg"},
    {".asf", "video/x-ms-asf"},
    {".m2t", "video/mpeg"},
    {".mov", "video/quicktime"},
    {".m2v", "video/mpeg"},
    {".mpeg", "video/mpeg"},
    {".3gp", "video/3gp"},
    {".mkv", "video/x-matroska"},
    {".mts", "video/mpeg"},
    {".tod", "video/mpeg"},
    {".mod", "video/mpeg"},
    {".trp", "video/mpeg"},
    {".m1v", "video/mpeg"},
    {".m4v", "video/mp4"},
    {".rmp4", "video/mp4"},
    {".divx", "video/divx"},
    {".flv", "video/x-flv"},
    {".iso", "video/mpeg"},
    {".rmvb", "video/vnd.rn-realvideo"},
    {".rm", "video/vnd.rn-realvideo"},
    {".mpv2", "video/mpeg"},
    {".mp2v", "video/mpeg"},
    {".insv", "video/mp4"},
    {".f4v", "video/x-f4v"},
};

// Codec, brand and format packed together, as stored.
const Row kSongs[] = {
    {".mp3", "audio/mpeg", 0x00015001'00000001, 0},
    {".aac", "audio/x-aac", 0x00015002'00000010, 1},
    {".wav", "audio/x-wav", 0x00010000'00000002, 1},
    {".wma", "audio/x-ms-wma", 0x00015008'00000007, 0},
    {".flac", "audio/x-flac", 0x0001500C'00000003, 0},
    {".ape", "audio/x-monkeys-audio", 0x00015021'00000004, 1},
    {".dts", "application/octet-stream", 0x00015004'00000002, 1},
    {".m4a", "audio/x-m4a", 0x00015002'00010008, 0},
    {".ogg", "audio/ogg", 0x00015005'00000005, 0},
    {".ac3", "audio/ac3", 0x00015003'00000006, 1},
    {".aiff", "audio/x-aiff", 0x00010000'0000000E, 1},
    {".au", "audio/basic", 0x00010006'0000000F, 1},
    {".aif", "audio/x-aiff", 0x00010000'0000000E, 1},
    {".m4r", "audio/x-m4a", 0x00015002'00010008, 0},
    {".dsf", "audio/x-dsf", 0x00016FFF'00000016, 0},
    {".dff", "audio/x-dff", 0x00016FFF'00000017, 1},
    {".m4b", "audio/x-m4b", 0x00015002'00010008, 0},
    {".mka", "audio/x-matroska", 0x00015001'0000000C, 0},
    {".wv", "audio/x-wavpack", 0x00015019'00000018, 0},
    {".mpa", "audio/mpeg", 0x00015001'00000001, 0},
    {".ra", "audio/vnd.rn-realaudio", 0x00013000'00000019, 0},
    {".adts", "audio/vnd.dlna.adts", 0x00015002'00000010, 1},
};

const Row kPictures[] = {
    {".jpeg", "image/jpeg", 1},       {".jpe", "image/jpeg", 1},  {".jpg", "image/jpeg", 1},
    {".bmp", "image/bmp", 2},         {".gif", "image/gif", 3},   {".png", "image/png", 4},
    {".tif", "image/tiff", 5},        {".tiff", "image/tiff", 5}, {".cr2", "image/x-canon-cr2", 6},
    {".crw", "image/x-canon-crw", 7}, {".arw", "image/sony", 8},  {".sr2", "image/sony", 9},
    {".dcr", "image/dcr", 10},        {".kdc", "image/kdc", 11},  {".nef", "image/nef", 12},
    {".mrw", "image/mrw", 13},        {".pef", "image/pef", 14},  {".raf", "image/raf", 15},
    {".3fr", "image/3fr", 16},        {".erf", "image/erf", 17},  {".mef", "image/mef", 18},
    {".mos", "image/mos", 19},        {".orf", "image/orf", 20},  {".rw2", "image/rw2", 21},
    {".dng", "image/dng", 22},        {".x3f", "image/x3f", 23},  {".srf", "image/srf", 24},
    {".k25", "image/k25", 25},        {".ptx", "image/ptx", 26},  {".tga", "image/x-tga", 27},
    {".pdf", "application/pdf", 28},  {".iiq", "image/iiq", 29},  {".insp", "image/jpeg", 1},
};

const Row kPlaylists[] = {
    {".m3u", "text/plain"},
    {".pls", "text/plain"},
    {".wpl", "application/vnd.ms-wpl"},
    {".asx", "application/asx"},
};

void expectTable(const MediaFileInfo* table, std::span<const Row> rows) {
  std::set<std::string> seen;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    SCOPED_TRACE(testing::Message() << "row " << i + 1 << ", " << rows[i].extension);
    ASSERT_NE(table[i].extension, nullptr);
    EXPECT_STREQ(table[i].extension, rows[i].extension);
    EXPECT_STREQ(table[i].mimeType, rows[i].mimeType);
    EXPECT_EQ(table[i].formatIds, rows[i].formatIds);
    EXPECT_EQ(table[i].flag, rows[i].flag);
    EXPECT_TRUE(seen.insert(table[i].extension).second) << "twice in the table";
    EXPECT_LE(std::strlen(table[i].extension), 9U);
    EXPECT_EQ(table[i].extension[0], '.');
  }
  const MediaFileInfo& terminator = table[rows.size()];
  EXPECT_EQ(terminator.extension, nullptr);
  EXPECT_EQ(terminator.mimeType, nullptr);
  EXPECT_EQ(terminator.formatIds, 0U);
  EXPECT_EQ(terminator.flag, 0U);
}

TEST(FileTypeTables, HoldTheVideoRows) {
  expectTable(g_VideoFileInfo, kVideos);
}
TEST(FileTypeTables, HoldTheSongRows) {
  expectTable(g_SongFileInfo, kSongs);
}
TEST(FileTypeTables, HoldThePictureRows) {
  expectTable(g_PictureFileInfo, kPictures);
}
TEST(FileTypeTables, HoldThePlaylistRows) {
  expectTable(g_PlaylistFileInfo, kPlaylists);
}

TEST(FileTypeTables, HaveSizesThatIncludeTheTerminator) {
  EXPECT_EQ(g_VideoFileInfoSize, 34U);
  EXPECT_EQ(g_SongFileInfoSize, 23U);
  EXPECT_EQ(g_PictureFileInfoSize, 34U);
  EXPECT_EQ(g_VideoFileInfoSize, std::size(kVideos) + 1);
  EXPECT_EQ(g_SongFileInfoSize, std::size(kSongs) + 1);
  EXPECT_EQ(g_PictureFileInfoSize, std::size(kPictures) + 1);
  EXPECT_EQ(std::size(kPlaylists), 4U);
}

// Hosts store these pairings.
TEST(FileTypeTables, KeepOddPairingsOfSongs) {
  EXPECT_EQ(g_SongFileInfo[6].formatIds, 0x0001500400000002U) << "DTS as WAV";
  EXPECT_EQ(g_SongFileInfo[7].formatIds, 0x0001500200010008U);
  EXPECT_EQ(g_SongFileInfo[17].formatIds, 0x000150010000000CU) << "Matroska audio as MP3";
  EXPECT_EQ(g_SongFileInfo[10].formatIds, 0x000100000000000EU) << "AIFF as little-endian PCM";
}

TEST(FileTypeTables, HaveFourSlotsPerRow) {
  EXPECT_EQ(sizeof(MediaFileInfo), 4 * sizeof(std::uint64_t));
  EXPECT_EQ(offsetof(MediaFileInfo, extension), 0U);
  EXPECT_EQ(offsetof(MediaFileInfo, mimeType), 8U);
  EXPECT_EQ(offsetof(MediaFileInfo, formatIds), 16U);
  EXPECT_EQ(offsetof(MediaFileInfo, flag), 24U);
}

TEST(ScannedFlags, HaveFixedValues) {
  EXPECT_EQ(kScannedFlagNotReady, 0);
  EXPECT_EQ(kScannedFlagFound, 1);
  EXPECT_EQ(kScannedFlagThumbNotReady, 2);
  EXPECT_EQ(kScannedFlagNotFound, 16);
  EXPECT_EQ(kScannedFlagOversize, 17);
  EXPECT_EQ(kScannedFlagPathInvalid, 18);
  EXPECT_EQ(kScannedFlagLessThanMin, 20);
  EXPECT_EQ(kScannedFlagInBlacklist, 21);
  EXPECT_EQ(kScannedFlagNeedRegen, 22);
  EXPECT_EQ(kScannedFlagNeedUpdate, 23);
  EXPECT_EQ(kScannedFlagScanning, 66);
  EXPECT_EQ(kScannedFlagParamError, 90);
}

}  // namespace
