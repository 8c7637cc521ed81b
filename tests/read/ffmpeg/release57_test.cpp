// The library reports the values of release 57, whatever the linked release reports.
#include <gtest/gtest.h>

#include <string>

#include "read/ffmpeg/input.h"
#include "support/media_factory.h"

namespace ffmpeg = kolum::ffmpeg;
using kolum::test::media;

namespace {

struct Levels {
  int profile;
  int level;
};

Levels levelsOf(const std::string& path) {
  const auto container = ffmpeg::readContainer(path, ffmpeg::Depth::kStreams);
  if (!container || container->streams.empty()) return {0, 0};
  const kolum::media::Stream& stream = container->streams[0];
  return {stream.profile.value_or(-99), stream.level.value_or(-99)};
}

// Later releases report profiles for these codecs; databases hold "unknown".
TEST(Release57, HasNoProfilesForSomeCodecs) {
  constexpr struct {
    const char* name;
    const char* arguments;
  } kRows[] = {
      {"huffman.jpg", "-f lavfi -i testsrc=s=64x48 -frames:v 1 -c:v mjpeg"},
      {"prores.mov", "-f lavfi -i testsrc=s=64x48:d=1 -c:v prores_ks -profile:v 2"},
      {"joint.eac3", "-f lavfi -i sine=d=1 -c:a eac3"},
      {"lossless.thd", "-f lavfi -i sine=d=1:r=48000 -c:a truehd -strict -2"},
      {"one.mkv", "-f lavfi -i testsrc=s=64x48:d=1 -c:v libaom-av1 -cpu-used 8"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    const Levels levels = levelsOf(media(row.name, row.arguments));
    EXPECT_EQ(levels.profile, -99);
    EXPECT_EQ(levels.level, -99);
  }
}

TEST(Release57, KeepsProfilesOfOtherCodecs) {
  const Levels h264 =
      levelsOf(media("high.mp4",
                     "-f lavfi -i testsrc=s=64x48:d=1 -pix_fmt yuv420p -c:v libx264 -level 3.1 "
                     "-profile:v high"));
  EXPECT_EQ(h264.profile, 100);
  EXPECT_EQ(h264.level, 31);
}

// FFmpeg 6.1 and later double these.
TEST(Release57, HasBaseFrameRateOfProgressivePictures) {
  constexpr struct {
    const char* name;
    const char* arguments;
  } kRows[] = {
      {"plain.mpg", "-c:v mpeg1video"}, {"plain.m1v", "-c:v mpeg1video"},
      {"plain.h264", "-c:v libx264"},   {"plain.ts", "-c:v libx264"},
      {"plain.m2v", "-c:v mpeg2video"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    const std::string path =
        media(row.name, std::string("-f lavfi -i testsrc=s=64x48:r=25:d=2 -pix_fmt yuv420p ") +
                            row.arguments);
    const auto container = ffmpeg::readContainer(path, ffmpeg::Depth::kStreams);
    ASSERT_TRUE(container);
    const kolum::media::Rational rate = container->streams[0].frameRate;
    EXPECT_EQ(rate.num, 25 * rate.den);
  }
}

}  // namespace
