// The audio class that drives DLNA naming.
#ifndef KOLUM_DLNA_AUDIO_CLASS_H
#define KOLUM_DLNA_AUDIO_CLASS_H

#include <cstdint>
#include <span>

namespace kolum::dlna {

// Classes, as naming rules and the video record know them.
inline constexpr unsigned kAudioClassNone = 0;
inline constexpr unsigned kAudioClassMp3 = 1;
inline constexpr unsigned kAudioClassAc3 = 2;
inline constexpr unsigned kAudioClassWmaBase = 3;
inline constexpr unsigned kAudioClassWmaFull = 4;
inline constexpr unsigned kAudioClassWmaPro = 5;
inline constexpr unsigned kAudioClassMp2 = 6;
inline constexpr unsigned kAudioClassPcm = 7;
inline constexpr unsigned kAudioClassAacStereo = 8;
inline constexpr unsigned kAudioClassAacMultichannel = 9;
inline constexpr unsigned kAudioClassAmr = 10;
// AAC that fits neither of its classes keeps the number of its codec; naming asks for it.
inline constexpr unsigned kAudioClassAacOther = 0x15002;

struct AudioClassFacts {
  int codec = 0;  // CODEC_ID_*
  std::int64_t bitRate = 0;
  int sampleRate = 0;
  int channels = 0;
  std::span<const std::uint8_t> extraData = {};
};

unsigned audioClass(const AudioClassFacts& facts);

}  // namespace kolum::dlna

#endif
