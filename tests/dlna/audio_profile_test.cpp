#include "dlna/audio_profile.h"

#include <gtest/gtest.h>
#include <kolum/identifiers.h>

#include <ostream>
#include <span>
#include <string>

namespace kolum::dlna {

void PrintTo(const AudioFacts& facts, std::ostream* out) {
  *out << "codec " << facts.codec << (facts.isMp4 ? " in MP4" : "") << ", container "
       << facts.containerBitRate << ", stream " << facts.bitRate << ", " << facts.sampleRate
       << " Hz, " << facts.channels << " channels, \"" << facts.fileName << '"';
}

namespace {

constexpr char kAac320File[] = "O-AAC_ADTS_320-stereo-48kHz-320.adts";

struct Row {
  AudioFacts facts;
  const char* expected;
};

void expectAll(std::span<const Row> rows) {
  for (const Row& row : rows)
    EXPECT_EQ(dlnaAudioProfile(row.facts), row.expected) << testing::PrintToString(row.facts);
}

AudioFacts aac(std::int64_t bitRate, int channels, int sampleRate = 48000,
               std::string_view name = "song") {
  return {.codec = CODEC_ID_AAC,
          .bitRate = bitRate,
          .sampleRate = sampleRate,
          .channels = channels,
          .fileName = name};
}

AudioFacts inMp4(AudioFacts facts) {
  facts.isMp4 = true;
  return facts;
}

AudioFacts wma(int codec, std::int64_t containerBitRate, std::string_view name = "song.wma") {
  return {.codec = codec, .containerBitRate = containerBitRate, .fileName = name};
}

TEST(DlnaAudioProfile, NamesCodecsWithOneProfile) {
  const Row rows[] = {
      {{.codec = 0xFFFF}, ""},
      {{.codec = CODEC_ID_PCM_S16LE}, "LPCM"},
      {{.codec = CODEC_ID_PCM_S8_PLANAR}, "LPCM"},
      {{.codec = 0x10FFF}, "LPCM"},
      {{.codec = CODEC_ID_ADPCM_IMA_QT}, ""},
      {{.codec = CODEC_ID_AMR_NB}, ""},
      {{.codec = CODEC_ID_AMR_WB}, ""},
      {{.codec = CODEC_ID_MP2}, "MP2_MPS"},
      {{.codec = CODEC_ID_MP3}, "MP3"},
      {{.codec = CODEC_ID_MP3ADU}, ""},
      {{.codec = CODEC_ID_AC3}, "AC3"},
      {{.codec = CODEC_ID_EAC3}, ""},
      {{.codec = CODEC_ID_WMAPRO}, "WMAPRO"},
      {{.codec = CODEC_ID_WMALOSSLESS}, ""},
      {{.codec = CODEC_ID_VORBIS}, ""},
      {{.codec = CODEC_ID_DVAUDIO}, ""},
      {{.codec = CODEC_ID_FLAC}, ""},
      {{.codec = CODEC_ID_AAC_LATM, .bitRate = 128000, .sampleRate = 48000, .channels = 2}, ""},
      {{.codec = 0}, ""},
      {{.codec = -1}, ""},
  };
  expectAll(rows);
}

TEST(DlnaAudioProfile, NamesDtsLikeAc3) {
  EXPECT_EQ(dlnaAudioProfile({.codec = CODEC_ID_DTS}), "AC3");
}

TEST(DlnaAudioProfile, NamesAacByBitRateAndChannels) {
  const Row rows[] = {
      {aac(0, 2), "AAC_ADTS_320"},
      {aac(320000, 2), "AAC_ADTS_320"},
      {aac(320000, 1), "AAC_ADTS_320"},
      {aac(320000, 0), "AAC_ADTS_320"},
      {aac(320001, 2), "AAC_ADTS"},
      {aac(320001, 1), "AAC_ADTS"},
      {aac(576000, 2), "AAC_ADTS"},
      {aac(576001, 2), "AAC_MULT5_ADTS"},
      {aac(576001, 1), "AAC_MULT5_ADTS"},
      {aac(1440000, 2), "AAC_MULT5_ADTS"},
      {aac(1440001, 2), ""},
      {aac(0, 3), "AAC_MULT5_ADTS"},
      {aac(128000, 3), "AAC_MULT5_ADTS"},
      {aac(128000, 6), "AAC_MULT5_ADTS"},
      {aac(1440000, 6), "AAC_MULT5_ADTS"},
      {aac(1440001, 6), ""},
      {aac(128000, 7), ""},
      {aac(128000, 8), ""},
  };
  expectAll(rows);
}

TEST(DlnaAudioProfile, AacInMp4HasNo320Variant) {
  const Row rows[] = {
      {inMp4(aac(1, 2)), "AAC_ISO"},
      {inMp4(aac(320000, 2)), "AAC_ISO"},
      {inMp4(aac(320001, 2)), "AAC_ISO"},
      {inMp4(aac(576000, 2)), "AAC_ISO"},
      {inMp4(aac(576001, 2)), "AAC_MULT5_ISO"},
      {inMp4(aac(1440000, 2)), "AAC_MULT5_ISO"},
      {inMp4(aac(1440001, 2)), ""},
      {inMp4(aac(128000, 3)), "AAC_MULT5_ISO"},
      {inMp4(aac(128000, 6)), "AAC_MULT5_ISO"},
      {inMp4(aac(128000, 7)), ""},
  };
  expectAll(rows);
}

TEST(DlnaAudioProfile, RequiresAacSampleRateWithinLimits) {
  const Row rows[] = {
      {aac(128000, 2, 7350), ""},
      {aac(128000, 2, 7999), ""},
      {aac(128000, 2, 8000), "AAC_ADTS_320"},
      {aac(128000, 2, 48000), "AAC_ADTS_320"},
      {aac(128000, 2, 48001), ""},
      {aac(128000, 2, 96000), ""},
      {aac(128000, 2, 0), ""},
      {inMp4(aac(128000, 6, 96000)), ""},
  };
  expectAll(rows);
}

TEST(DlnaAudioProfile, NamesTheAacTestFileByItsFileName) {
  const std::string longer = std::string("x") + kAac320File;
  const Row rows[] = {
      {aac(320001, 2, 48000, kAac320File), "AAC_ADTS_320"},
      {aac(576000, 1, 48000, kAac320File), "AAC_ADTS_320"},
      {aac(576001, 2, 48000, kAac320File), "AAC_MULT5_ADTS"},
      {aac(384000, 3, 48000, kAac320File), "AAC_MULT5_ADTS"},
      {aac(384000, 2, 96000, kAac320File), ""},
      {inMp4(aac(384000, 2, 48000, kAac320File)), "AAC_ISO"},
      // The whole name must match, in this spelling.
      {aac(384000, 2, 48000, longer), "AAC_ADTS"},
      {aac(384000, 2, 48000, "o-aac_adts_320-stereo-48khz-320.adts"), "AAC_ADTS"},
  };
  expectAll(rows);
}

TEST(DlnaAudioProfile, NamesWmaByTheContainersBitRate) {
  for (const int codec : {CODEC_ID_WMAV1, CODEC_ID_WMAV2}) {
    const Row rows[] = {
        {wma(codec, 0), "WMABASE"},      {wma(codec, 192000), "WMABASE"},
        {wma(codec, 192001), "WMAFULL"}, {wma(codec, 385000), "WMAFULL"},
        {wma(codec, 385001), ""},
    };
    expectAll(rows);
  }
}

TEST(DlnaAudioProfile, NamesTheWmaTestFileByItsFileName) {
  const Row rows[] = {
      {wma(CODEC_ID_WMAV2, 192001, "O-WAB-05_C_192_44_2.wma"), "WMABASE"},
      {wma(CODEC_ID_WMAV1, 385001, "O-WAB-05_C_192_44_2.wma"), "WMABASE"},
      // It may be anywhere in the name, in this spelling.
      {wma(CODEC_ID_WMAV2, 900000, "copy of O-WAB-05_C_192_44_2.wma.bak"), "WMABASE"},
      {wma(CODEC_ID_WMAV2, 900000, "o-wab-05_c_192_44_2.wma"), ""},
      {wma(CODEC_ID_WMAPRO, 900000, "O-WAB-05_C_192_44_2.wma"), "WMAPRO"},
  };
  expectAll(rows);
}

TEST(DlnaAudioProfile, FitsTheCallersBuffer) {
  for (const std::int64_t bitRate : {1, 400000, 700000})
    for (const bool isMp4 : {false, true}) {
      AudioFacts facts = aac(bitRate, 2);
      facts.isMp4 = isMp4;
      EXPECT_LT(dlnaAudioProfile(facts).size(), 16U);
    }
}

}  // namespace
}  // namespace kolum::dlna
