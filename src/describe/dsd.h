// DSD songs: samples of one bit, which FFmpeg counts in bytes.
#ifndef KOLUM_DESCRIBE_DSD_H
#define KOLUM_DESCRIBE_DSD_H

#include <cstdint>
#include <optional>

#include "media/container.h"
#include "media/stream.h"

namespace kolum::describe {

inline constexpr int kDsdBitsPerSample = 1;

bool isDsd(const media::Stream& stream);
// The song of one of DSD's own containers; null for other files.
const media::Stream* dsdSong(const media::Container& container);

// FORMAT_* of such a container.
std::optional<std::uint32_t> dsdFormat(const media::Container& container);

// In samples per second, of DSD, too.
std::int64_t sampleRateOf(const media::Stream& stream);

}  // namespace kolum::describe

#endif
