#include "media/container.h"

#include <kolum/identifiers.h>

#include <algorithm>
#include <array>

#include "base/text.h"

namespace kolum::media {

namespace {

// RealMedia is FORMAT_RM for videos and FORMAT_RA for songs; databases hold both.
constexpr auto kContainers = std::to_array<ContainerType>({
    // clang-format off
    {kDemuxerAsf, FORMAT_ASF, FORMAT_ASF, "video/x-ms-wmv", false, "ASF"},
    {kDemuxerMp4, FORMAT_MPEG4, FORMAT_MPEG4, "video/mp4", false, "MP4"},
    {kDemuxerAvi, FORMAT_AVI, FORMAT_AVI, "video/x-msvideo", true, ""},
    {kDemuxerMpegPs, FORMAT_MPEG, FORMAT_MPEG, "video/mpeg", false, "MPEG program stream"},
    {kDemuxerMpegTs, FORMAT_TS, FORMAT_TS, "video/mpeg", false, "MPEG transport stream"},
    {"mpegvideo", FORMAT_UNKNOWN, kOtherSongFormat, "video/mpeg", false, "none, plain MPEG video"},
    {kDemuxerMatroska, FORMAT_MKV, FORMAT_MKV, "video/x-matroska", true, ""},
    {kDemuxerFlv, FORMAT_FLV, FORMAT_FLV, "video/x-flv", true, ""},
    {kDemuxerRm, FORMAT_RM, FORMAT_RA, "", false, ""},
    {"mp3", FORMAT_UNKNOWN, FORMAT_MP3, "", false, ""},
    {"wav", FORMAT_UNKNOWN, FORMAT_WAV, "", false, ""},
    {"flac", FORMAT_UNKNOWN, FORMAT_FLAC, "", false, ""},
    {"ape", FORMAT_UNKNOWN, FORMAT_APE, "", false, ""},
    {"ogg", FORMAT_UNKNOWN, FORMAT_OGG, "", false, ""},
    {"ac3", FORMAT_UNKNOWN, FORMAT_AC3, "", false, ""},
    {"aiff", FORMAT_UNKNOWN, FORMAT_AIFF, "", false, ""},
    {"au", FORMAT_UNKNOWN, FORMAT_AU, "", false, ""},
    {"aac", FORMAT_UNKNOWN, FORMAT_AAC, "", false, ""},
    {"wv", FORMAT_UNKNOWN, FORMAT_WV, "", false, ""},
    // clang-format on
});

constexpr ContainerType kUnknown = {"", FORMAT_UNKNOWN, kOtherSongFormat, "", false, ""};

// Families of demuxers, by the prefix of their names.
struct FamilyMimeType {
  std::string_view prefix;
  std::string_view mimeType;
};
constexpr FamilyMimeType kFamilies[] = {{"mpeg", "video/mpeg"}, {"matroska", "video/x-matroska"}};

}  // namespace

const ContainerType& containerType(std::string_view demuxer) {
  const auto row = std::find_if(kContainers.begin(), kContainers.end(),
                                [&](const ContainerType& each) { return each.demuxer == demuxer; });
  return row != kContainers.end() ? *row : kUnknown;
}

std::string_view fallbackMimeType(std::string_view demuxer, std::string_view path) {
  if (demuxer == kDemuxerMp4 && endsWithIgnoringCase(path, ".mov")) return "video/quicktime";
  if (const std::string_view own = containerType(demuxer).mimeType; !own.empty()) return own;
  for (const FamilyMimeType& family : kFamilies)
    if (demuxer.starts_with(family.prefix)) return family.mimeType;
  return "";
}

}  // namespace kolum::media
