// Containers, by the demuxers that read them.
#ifndef KOLUM_VIDEO_CONTAINER_H
#define KOLUM_VIDEO_CONTAINER_H

#include <cstdint>
#include <string_view>

namespace kolum::video {

// FORMAT_* of the containers that may hold a video; FORMAT_UNKNOWN for all others.
std::uint32_t containerFormat(std::string_view demuxer);

}  // namespace kolum::video

#endif
