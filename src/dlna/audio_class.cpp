#include "dlna/audio_class.h"

#include <kolum/identifiers.h>

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

unsigned wmaClass(std::int64_t bitRate) {
  if (bitRate <= kWmaBaseBitRate) return AUDIO_CLASS_WMA_BASE;
  if (bitRate <= kWmaFullBitRate) return AUDIO_CLASS_WMA_FULL;
  return AUDIO_CLASS_NONE;
}

bool isLowComplexity(std::span<const std::uint8_t> extraData) {
  if (extraData.empty()) return false;
  const unsigned objectType = extraData.front() >> 3;
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

}  // namespace kolum::dlna
