#include "media/levels.h"

#include <gtest/gtest.h>
#include <kolum/identifiers.h>

namespace kolum::media {
namespace {

TEST(LevelName, FollowsTheCodec) {
  constexpr struct {
    int codec;
    int level;
    const char* name;
  } kRows[] = {
      {CODEC_ID_H264, 9, "1b"},
      {CODEC_ID_H264, 10, "1"},
      {CODEC_ID_H264, 31, "3.1"},
      {CODEC_ID_H264, 52, "5.2"},
      {CODEC_ID_HEVC, 90, "3"},
      {CODEC_ID_HEVC, 93, "3.1"},
      {CODEC_ID_HEVC, 186, "6.2"},
      {CODEC_ID_MPEG2VIDEO, 8, "main"},
      {CODEC_ID_MPEG2VIDEO, 6, "high 1440"},
      {CODEC_ID_MPEG2VIDEO, 5, "5"},
      {CODEC_ID_MPEG4, 9, "0b"},
      {CODEC_ID_MPEG4, 7, "3b"},
      {CODEC_ID_MPEG4, 5, "5"},
      {CODEC_ID_VC1, 3, "3"},
  };
  for (const auto& row : kRows)
    EXPECT_EQ(levelName(row.codec, row.level), row.name) << row.codec << " " << row.level;
}

TEST(LevelName, IsEmptyWhenUnknown) {
  for (const int codec : {CODEC_ID_H264, CODEC_ID_HEVC, CODEC_ID_MPEG2VIDEO, CODEC_ID_VC1})
    EXPECT_EQ(levelName(codec, kUnknownLevel), "");
}

}  // namespace
}  // namespace kolum::media
