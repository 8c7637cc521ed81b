#include "video/container.h"

#include <kolum/identifiers.h>

#include <array>

#include "av/input.h"

namespace kolum::video {

namespace {

struct ContainerRow {
  std::string_view demuxer;
  std::uint32_t format;
};

constexpr auto kContainers = std::to_array<ContainerRow>({
    {av::kDemuxerAsf, FORMAT_ASF},
    {av::kDemuxerMp4, FORMAT_MPEG4},
    {av::kDemuxerAvi, FORMAT_AVI},
    {av::kDemuxerMpegPs, FORMAT_MPEG},
    {av::kDemuxerMpegTs, FORMAT_TS},
    {av::kDemuxerMatroska, FORMAT_MKV},
    {av::kDemuxerFlv, FORMAT_FLV},
    {av::kDemuxerRm, FORMAT_RM},
});

}  // namespace

std::uint32_t containerFormat(std::string_view demuxer) {
  for (const ContainerRow& row : kContainers)
    if (row.demuxer == demuxer) return row.format;
  return FORMAT_UNKNOWN;
}

}  // namespace kolum::video
