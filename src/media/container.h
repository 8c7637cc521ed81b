// Containers, by FFmpeg's demuxers.
#ifndef KOLUM_MEDIA_CONTAINER_H
#define KOLUM_MEDIA_CONTAINER_H

#include <cstdint>
#include <string_view>

namespace kolum::media {

// FFmpeg's short names of the demuxers that rules refer to.
inline constexpr std::string_view kDemuxerMp4 = "mov,mp4,m4a,3gp,3g2,mj2";
inline constexpr std::string_view kDemuxerAsf = "asf";
inline constexpr std::string_view kDemuxerAvi = "avi";
inline constexpr std::string_view kDemuxerFlv = "flv";
inline constexpr std::string_view kDemuxerMatroska = "matroska,webm";
inline constexpr std::string_view kDemuxerMpegPs = "mpeg";
inline constexpr std::string_view kDemuxerMpegTs = "mpegts";
inline constexpr std::string_view kDemuxerRm = "rm";

// The format of a song in an unknown container.
inline constexpr std::uint32_t kOtherSongFormat = 0xFFFFFFFF;

struct ContainerType {
  std::string_view demuxer;
  std::uint32_t videoFormat;  // FORMAT_*; FORMAT_UNKNOWN if it holds no video
  std::uint32_t songFormat;   // FORMAT_*, or kOtherSongFormat
  std::string_view mimeType;  // of videos in it; empty if only their content decides
  bool mimeTypeDecides;       // such videos get no DLNA profile
  std::string_view label;     // for people; empty if the demuxer's name is enough
};

// An unknown container has the unknown formats, and no texts.
const ContainerType& containerType(std::string_view demuxer);

// The MIME type of the video at PATH, if nothing else gave one; empty for an unknown demuxer.
std::string_view fallbackMimeType(std::string_view demuxer, std::string_view path);

}  // namespace kolum::media

#endif
