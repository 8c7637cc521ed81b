// The audio class that DLNA names depend on.
#ifndef KOLUM_DLNA_AUDIO_CLASS_H
#define KOLUM_DLNA_AUDIO_CLASS_H

#include <kolum/video.h>

#include <cstdint>
#include <span>
#include <string_view>

namespace kolum::dlna {

struct AudioClassFacts {
  int codec = 0;  // CODEC_ID_*
  std::int64_t bitRate = 0;
  int sampleRate = 0;
  int channels = 0;
  std::span<const std::uint8_t> extraData = {};
};

// AUDIO_CLASS_*.
unsigned audioClass(const AudioClassFacts& facts);

// The name of a class for people; empty for a number that is none.
std::string_view audioClassName(std::int64_t audioClass);

}  // namespace kolum::dlna

#endif
