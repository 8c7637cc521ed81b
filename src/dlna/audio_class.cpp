#include "dlna/audio_class.h"

#include <kolum/identifiers.h>

#include "base/bytes.h"

namespace kolum::dlna {

namespace {

constexpr int kFirstPcm = 0x10000;
constexpr int kLastPcm = 0x10FFF;

// Highest bit rates of the Windows Media Audio profiles, with some margin for rounding encoders.
constexpr std::int64_t kWmaBaseBitRate = 193000;
constexpr std::int64_t kWmaFullBitRate = 385000;

constexpr std::int64_t kAacStereoBitRate = 576000;
constexpr std::int64_t kAacMultichannelBitRate = 1440000;

// MPEG-4 audio object types of low-complexity decoders.
constexpr unsigned kObjectTypeLowComplexity = 2;
constexpr unsigned kObjectTypeErrorResilientLowComplexity = 17;

struct ClassName {
  std::int64_t audioClass;
  std::string_view name;
};

constexpr ClassName kNames[] = {
    {AUDIO_CLASS_NONE, "none"},
    {AUDIO_CLASS_MP3, "MP3"},
    {AUDIO_CLASS_AC3, "AC-3 or DTS"},
    {AUDIO_CLASS_WMA_BASE, "WMA up to 193 kbit/s"},
    {AUDIO_CLASS_WMA_FULL, "WMA up to 385 kbit/s"},
    {AUDIO_CLASS_WMA_PRO, "WMA Pro"},
    {AUDIO_CLASS_MP2, "MP2"},
    {AUDIO_CLASS_PCM, "PCM"},
    {AUDIO_CLASS_AAC_STEREO, "AAC-LC stereo"},
    {AUDIO_CLASS_AAC_MULTICHANNEL, "AAC-LC multichannel"},
    {AUDIO_CLASS_AMR, "AMR"},
    {AUDIO_CLASS_AAC_OTHER, "other AAC"},
};

unsigned wmaClass(std::int64_t bitRate) {
  if (bitRate <= kWmaBaseBitRate) return AUDIO_CLASS_WMA_BASE;
  if (bitRate <= kWmaFullBitRate) return AUDIO_CLASS_WMA_FULL;
  return AUDIO_CLASS_NONE;
}

bool isLowComplexity(std::span<const std::uint8_t> extraData) {
  const std::uint32_t objectType = BitReader(extraData).bits(5);
  return objectType == kObjectTypeLowComplexity ||
         objectType == kObjectTypeErrorResilientLowComplexity;
}

unsigned aacClass(const AudioClassFacts& facts) {
  const bool rateFits = facts.sampleRate >= 8000 && facts.sampleRate <= 48000;
  if (!isLowComplexity(facts.extraData) || !rateFits || facts.channels > 6)
    return AUDIO_CLASS_AAC_OTHER;
  if (facts.channels <= 2 && facts.bitRate <= kAacStereoBitRate) return AUDIO_CLASS_AAC_STEREO;
  if (facts.bitRate <= kAacMultichannelBitRate) return AUDIO_CLASS_AAC_MULTICHANNEL;
  return AUDIO_CLASS_AAC_OTHER;
}

}  // namespace

unsigned audioClass(const AudioClassFacts& facts) {
  if (facts.codec >= kFirstPcm && facts.codec <= kLastPcm) return AUDIO_CLASS_PCM;
  switch (facts.codec) {
    case CODEC_ID_MP3:
      return AUDIO_CLASS_MP3;
    case CODEC_ID_AC3:
    case CODEC_ID_DTS:
      return AUDIO_CLASS_AC3;
    case CODEC_ID_WMAV1:
    case CODEC_ID_WMAV2:
      return wmaClass(facts.bitRate);
    case CODEC_ID_WMAPRO:
      return AUDIO_CLASS_WMA_PRO;
    case CODEC_ID_MP2:
      return AUDIO_CLASS_MP2;
    case CODEC_ID_AAC:
      return aacClass(facts);
    case CODEC_ID_AMR_NB:
      return AUDIO_CLASS_AMR;
    default:
      return AUDIO_CLASS_NONE;
  }
}

std::string_view audioClassName(std::int64_t audioClass) {
  for (const ClassName& row : kNames)
    if (row.audioClass == audioClass) return row.name;
  return "";
}

}  // namespace kolum::dlna
