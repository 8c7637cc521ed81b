#include "read/headers/ts_packets.h"

#include <kolum/video.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>

#include "base/log.h"

namespace kolum::headers {

using media::TransportPackets;

namespace {

constexpr std::size_t kPacketWindow = 576;  // three of the longer packets
constexpr std::size_t kOffsets = 192;
constexpr std::uint8_t kSync = 0x47;

TransportPackets packetsIn(std::span<const std::uint8_t, kPacketWindow> bytes) {
  const auto isSync = [&](std::size_t at) { return bytes[at] == kSync; };
  for (std::size_t start = 0; start < kOffsets; ++start) {
    if (!isSync(start)) continue;
    // The longer packets are tried first at every offset: their time stamps may look like the
    // shorter ones' sync bytes.
    if (isSync(start + 192) && isSync(start + 384)) {
      const auto stamp = bytes.subspan(start + 188, 4);
      const bool isZero = stamp[0] == 0 && stamp[1] == 0 && stamp[2] == 0 && stamp[3] == 0;
      return {.size = TS_PACKET_STAMPED, .isTimeStamped = !isZero};
    }
    if (isSync(start + 188) && isSync(start + 376))
      return {.size = TS_PACKET_PLAIN, .isTimeStamped = false};
  }
  return {};
}

}  // namespace

std::optional<TransportPackets> packetsOf(const media::Source& source, Trace& trace) {
  std::array<std::uint8_t, kPacketWindow> bytes = {};
  errno = 0;
  if (source.readAt(0, bytes) == static_cast<std::ptrdiff_t>(bytes.size())) return packetsIn(bytes);
  // Hosts' log filters match this line by its number.
  trace.error("[" + std::string(kMediaSource) + ":1170] read: " + std::strerror(errno) + "\n");
  return std::nullopt;
}

}  // namespace kolum::headers
