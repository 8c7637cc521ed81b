#include "dlna/audio_class.h"

#include <gtest/gtest.h>
#include <kolum/identifiers.h>

#include <array>
#include <cstdint>
#include <initializer_list>

namespace kolum::dlna {

namespace {

constexpr std::array<std::uint8_t, 2> kLowComplexity = {2 << 3, 0x10};
constexpr std::array<std::uint8_t, 2> kErrorResilientLowComplexity = {17 << 3, 0x10};
constexpr std::array<std::uint8_t, 2> kMain = {1 << 3, 0x10};
constexpr std::array<std::uint8_t, 2> kHighEfficiency = {5 << 3, 0x10};

unsigned classOf(int codec, std::int64_t bitRate = 128000) {
  return audioClass({.codec = codec, .bitRate = bitRate, .sampleRate = 44100, .channels = 2});
}

TEST(AudioClass, FollowsTheCodec) {
  struct Row {
    int codec;
    unsigned expected;
  };
  const Row rows[] = {
      {CODEC_ID_MP3, 1},      {CODEC_ID_AC3, 2},      {CODEC_ID_DTS, 2},
      {CODEC_ID_WMAPRO, 5},   {CODEC_ID_MP2, 6},      {CODEC_ID_AMR_NB, 10},
      {CODEC_ID_EAC3, 0},     {CODEC_ID_VORBIS, 0},   {CODEC_ID_FLAC, 0},
      {CODEC_ID_AMR_WB, 0},   {CODEC_ID_AAC_LATM, 0}, {CODEC_ID_WMALOSSLESS, 0},
      {CODEC_ID_NONE, 0},     {CODEC_ID_DSD, 0},      {CODEC_ID_MP1, 0},
      {CODEC_ID_WMAVOICE, 0}, {CODEC_ID_TRUEHD, 0},   {CODEC_ID_ADPCM_IMA_QT, 0},
  };
  for (const Row& row : rows) EXPECT_EQ(classOf(row.codec), row.expected) << row.codec;
}

TEST(AudioClass, CoversEveryPcmCodec) {
  for (int codec = 0x10000; codec <= 0x10FFF; ++codec) ASSERT_EQ(classOf(codec), 7U) << codec;
  EXPECT_EQ(classOf(0xFFFF), 0U);
  EXPECT_EQ(classOf(0x11000), 0U);
}

TEST(AudioClass, SplitsWindowsMediaAudioByBitRate) {
  for (const int codec : {CODEC_ID_WMAV1, CODEC_ID_WMAV2}) {
    SCOPED_TRACE(codec);
    EXPECT_EQ(classOf(codec, 0), 3U);
    EXPECT_EQ(classOf(codec, 193000), 3U);
    EXPECT_EQ(classOf(codec, 193001), 4U);
    EXPECT_EQ(classOf(codec, 385000), 4U);
    EXPECT_EQ(classOf(codec, 385001), 0U);
  }
}

TEST(AudioClass, SplitsAacByObjectTypeRateAndChannels) {
  struct Row {
    std::span<const std::uint8_t> extraData;
    int sampleRate;
    int channels;
    std::int64_t bitRate;
    unsigned expected;
  };
  const Row rows[] = {
      {kLowComplexity, 48000, 2, 128000, 8},
      {kLowComplexity, 48000, 1, 128000, 8},
      {kLowComplexity, 48000, 0, 128000, 8},
      {kErrorResilientLowComplexity, 48000, 2, 128000, 8},
      {kMain, 48000, 2, 128000, 86018},
      {kHighEfficiency, 48000, 2, 128000, 86018},
      {{}, 48000, 2, 128000, 86018},
      {kLowComplexity, 7999, 2, 128000, 86018},
      {kLowComplexity, 8000, 2, 128000, 8},
      {kLowComplexity, 48001, 2, 128000, 86018},
      {kLowComplexity, 48000, 2, 576000, 8},
      {kLowComplexity, 48000, 2, 576001, 9},
      {kLowComplexity, 48000, 2, 1440000, 9},
      {kLowComplexity, 48000, 2, 1440001, 86018},
      {kLowComplexity, 48000, 3, 128000, 9},
      {kLowComplexity, 48000, 6, 1440000, 9},
      {kLowComplexity, 48000, 6, 1440001, 86018},
      {kLowComplexity, 48000, 7, 128000, 86018},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << row.sampleRate << " Hz, " << row.channels << " channels, "
                                    << row.bitRate << " bit/s, " << row.extraData.size());
    EXPECT_EQ(audioClass({.codec = CODEC_ID_AAC,
                          .bitRate = row.bitRate,
                          .sampleRate = row.sampleRate,
                          .channels = row.channels,
                          .extraData = row.extraData}),
              row.expected);
  }
}

TEST(AudioClass, KeepsTheCodecNumberForAacThatFitsNoClass) {
  EXPECT_EQ(classOf(CODEC_ID_AAC), static_cast<unsigned>(CODEC_ID_AAC));
}

}  // namespace

}  // namespace kolum::dlna
