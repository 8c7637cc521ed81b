// Pictures that are stored as tiles.
#include <gtest/gtest.h>
#include <kolum/kolum.h>

#include "read/ffmpeg/ffmpeg.h"
#include "support/heif_builder.h"
#include "support/temp_dir.h"

using namespace kolum::test;

namespace {

TEST(TiledPicture, HasTheSizeOfItsGrid) {
  const TempDir folder;
  const std::string path = folder.write("tiles.heic", heicOfTiles());
  constexpr int kFirstWithTiles = AV_VERSION_INT(61, 7, 100);
  if (avformat_version() < kFirstWithTiles)
    GTEST_SKIP() << "this release of FFmpeg does not read pictures of tiles";
  uint32_t width = 0;
  uint32_t height = 0;
  EXPECT_EQ(GetPhotoHW(path.c_str(), &width, &height), 0U);
  EXPECT_EQ(width, 200U);
  EXPECT_EQ(height, 100U);

  MediaInfo* info = nullptr;
  ASSERT_EQ(GetMediaInfo(path.c_str(), &info, 0, nullptr), 0U);
  EXPECT_EQ(info->streamCount, 1);
  EXPECT_EQ(info->streams[0].width, 200);
  Free_MediaInfo(info);
}

}  // namespace
