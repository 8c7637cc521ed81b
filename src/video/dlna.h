// Names the DLNA media format profile of a video: a pure decision over plain facts.
#ifndef KOLUM_VIDEO_DLNA_H
#define KOLUM_VIDEO_DLNA_H

#include <kolum/dlna.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "av/input.h"

namespace kolum::video {

struct DlnaFacts {
  int codec = 0;                  // CODEC_ID_* of the video
  std::string_view demuxer = {};  // FFmpeg's short name
  int width = 0;
  int height = 0;
  std::int64_t streamBitRate = 0;
  std::int64_t containerBitRate = 0;
  int profile = -99;  // FFmpeg's own numbers
  int level = -99;
  unsigned audioClass = 0;
  av::Rational realFrameRate = {};
  int timeBaseDen = 0;
  std::uint32_t codecTag = 0;
  std::string_view path = {};
  std::span<const std::uint8_t> extraData = {};
};

// The layout of MPEG transport packets, as ProbeTsPacketSize tells it. A file that cannot be read
// has size 0 and counts as time-stamped.
struct TransportPackets {
  unsigned size = 0;
  bool isTimeStamped = false;
};

using PacketReader = std::function<TransportPackets()>;

struct DlnaName {
  std::string profile;   // empty when there is none
  std::string mimeType;  // empty when the rules leave it open
  std::optional<std::uint32_t> playException;
};

// How a name came about, in words; see the public record of the same parts.
struct DlnaExplanation {
  std::vector<DlnaDetail> details;
  std::vector<DlnaCandidate> candidates;
  std::vector<std::string> remarks;
};

// READPACKETS is called at most once, and only when a rule asks for the packets. An EXPLANATION is
// filled when one is given and costs nothing otherwise.
DlnaName nameDlnaProfile(const DlnaFacts& facts, const PacketReader& readPackets,
                         DlnaExplanation* explanation = nullptr);

// DLNA's own test streams that are named kWmvHighTestProfile whatever the rules say.
bool isWmvHighTestStream(std::string_view fileName);
inline constexpr std::string_view kWmvHighTestProfile = "WMVHIGH_FULL";

// The MIME type of a file to which nothing else gave one; empty for an unknown demuxer.
std::string_view fallbackMimeType(std::string_view demuxer, std::string_view path);

}  // namespace kolum::video

#endif
