// Numbers as the library reports them, including unknown ones.
#ifndef KOLUM_PROBE_NUMBERS_H
#define KOLUM_PROBE_NUMBERS_H

#include "media/levels.h"
#include "media/stream.h"

namespace kolum::probe {

inline int profileNumber(const media::Stream& stream) {
  return stream.profile.value_or(media::kUnknownLevel);
}

inline int levelNumber(const media::Stream& stream) {
  return stream.level.value_or(media::kUnknownLevel);
}

}  // namespace kolum::probe

#endif
