// Names the DLNA media format profile of a video, from plain facts alone.
#ifndef KOLUM_DLNA_NAMING_H
#define KOLUM_DLNA_NAMING_H

#include <kolum/dlna.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "media/levels.h"
#include "media/rational.h"
#include "media/transport_packets.h"

namespace kolum::dlna {

struct DlnaFacts {
  int codec = 0;                  // CODEC_ID_* of the video
  std::string_view demuxer = {};  // FFmpeg's short name
  int width = 0;
  int height = 0;
  std::int64_t streamBitRate = 0;
  std::int64_t containerBitRate = 0;
  int profile = media::kUnknownLevel;  // FFmpeg's own numbers
  int level = media::kUnknownLevel;
  unsigned audioClass = 0;
  media::Rational realFrameRate = {};
  int timeBaseDen = 0;
  std::uint32_t codecTag = 0;
  std::string_view path = {};
  std::span<const std::uint8_t> extraData = {};
};

using media::TransportPackets;

using PacketReader = std::function<TransportPackets()>;

struct DlnaName {
  std::string profile;   // empty if there is none
  std::string mimeType;  // empty if the rules do not decide it
  std::optional<std::uint32_t> playException;
  // Lines that hosts read on standard output.
  std::vector<std::string> outputLines;
};

// Explains a name in words; the public record has the same parts.
struct DlnaExplanation {
  std::vector<DlnaDetail> details;
  std::vector<DlnaCandidate> candidates;
  std::vector<std::string> remarks;
};

// READPACKETS is called at most once, and only if a rule needs the packets. EXPLANATION is filled
// if given; without it no explanation is built.
DlnaName nameDlnaProfile(const DlnaFacts& facts, const PacketReader& readPackets,
                         DlnaExplanation* explanation = nullptr);

// The index of the rejected candidate with the fewest failed tests, or -1. Candidates after the
// last one taken are no improvement and do not count.
int nextBetter(std::span<const DlnaCandidate> candidates);

// DLNA's own test streams that are always named kWmvHighTestProfile, as certification requires.
bool isWmvHighTestStream(std::string_view fileName);
inline constexpr std::string_view kWmvHighTestProfile = "WMVHIGH_FULL";

}  // namespace kolum::dlna

#endif
