// Decides the DLNA profile name of a song from plain values.
#ifndef KOLUM_DLNA_AUDIO_PROFILE_H
#define KOLUM_DLNA_AUDIO_PROFILE_H

#include <cstdint>
#include <string_view>

namespace kolum::dlna {

struct AudioFacts {
  int codec = 0;  // CODEC_ID_*
  bool isMp4 = false;
  std::int64_t containerBitRate = 0;  // bit/s
  std::int64_t bitRate = 0;           // bit/s, of the stream
  int sampleRate = 0;                 // Hz
  int channels = 0;
  std::string_view fileName = {};
};

// The profile's name, such as "AAC_ISO"; empty if the song has none.
std::string_view dlnaAudioProfile(const AudioFacts& facts);

}  // namespace kolum::dlna

#endif
