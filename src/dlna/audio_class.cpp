#include "dlna/audio_class.h"

#include <kolum/identifiers.h>

namespace kolum::dlna {

namespace {

constexpr int kFirstPcm = 0x10000;
constexpr int kLastPcm = 0x10FFF;

// Highest bit rates of the Windows Media Audio profiles, with some room for rounding encoders.
constexpr std::int64_t kWmaBaseBitRate = 193000;
constexpr std::int64_t kWmaFullBitRate = 385000;

constexpr std::int64_t kAacStereoBitRate = 576000;
constexpr std::int64_t kAacMultichannelBitRate = 1440000;

// MPEG-4 audio object types whose decoders are low-complexity ones.
constexpr unsigned kObjectTypeLowComplexity = 2;
constexpr unsigned kObjectTypeErrorResilientLowComplexity = 17;

unsigned wmaClass(std::int64_t bitRate) {
  if (bitRate <= kWmaBaseBitRate) return kAudioClassWmaBase;
  if (bitRate <= kWmaFullBitRate) return kAudioClassWmaFull;
  return kAudioClassNone;
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
    return kAudioClassAacOther;
  if (facts.channels <= 2 && facts.bitRate <= kAacStereoBitRate) return kAudioClassAacStereo;
  if (facts.bitRate <= kAacMultichannelBitRate) return kAudioClassAacMultichannel;
  return kAudioClassAacOther;
}

}  // namespace

unsigned audioClass(const AudioClassFacts& facts) {
  if (facts.codec >= kFirstPcm && facts.codec <= kLastPcm) return kAudioClassPcm;
  switch (facts.codec) {
    case CODEC_ID_MP3:
      return kAudioClassMp3;
    case CODEC_ID_AC3:
    case CODEC_ID_DTS:
      return kAudioClassAc3;
    case CODEC_ID_WMAV1:
    case CODEC_ID_WMAV2:
      return wmaClass(facts.bitRate);
    case CODEC_ID_WMAPRO:
      return kAudioClassWmaPro;
    case CODEC_ID_MP2:
      return kAudioClassMp2;
    case CODEC_ID_AAC:
      return aacClass(facts);
    case CODEC_ID_AMR_NB:
      return kAudioClassAmr;
    default:
      return kAudioClassNone;
  }
}

}  // namespace kolum::dlna
