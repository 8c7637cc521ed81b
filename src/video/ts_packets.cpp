#include "video/ts_packets.h"

#include <kolum/video.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <span>

#include "support/file.h"
#include "support/log.h"

namespace kolum::video {

namespace {

constexpr std::size_t kWindow = 576;
constexpr std::size_t kOffsets = 192;
constexpr std::uint8_t kSync = 0x47;

TransportPackets packetsIn(std::span<const std::uint8_t, kWindow> bytes) {
  const auto isSync = [&](std::size_t at) { return bytes[at] == kSync; };
  for (std::size_t start = 0; start < kOffsets; ++start) {
    if (!isSync(start)) continue;
    // The longer packets are tried first at every offset: their time stamps may look like the
    // shorter ones.
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

TransportPackets transportPackets(const std::string& path) {
  unsigned size = 0;
  const bool isTimeStamped = ProbeTsPacketSize(path.c_str(), &size) != 0;
  return {.size = size, .isTimeStamped = isTimeStamped};
}

}  // namespace kolum::video

int ProbeTsPacketSize(const char* path, unsigned int* packetSize) {
  if (path == nullptr || packetSize == nullptr) return 1;
  const auto file = kolum::File::open(path);
  if (!file) {
    std::perror(path);
    return 1;
  }
  std::array<std::uint8_t, kolum::video::kWindow> bytes = {};
  errno = 0;
  if (file->readAt(0, bytes) != static_cast<std::ptrdiff_t>(bytes.size())) {
    // Hosts' log filters know this line by its number.
    const int reason = errno;
    std::fprintf(stderr, "[%s:%d] ", kolum::kMediaSource, 1170);
    errno = reason;
    std::perror("read");
    return 1;
  }
  const kolum::video::TransportPackets found =
      kolum::video::packetsIn(std::span<const std::uint8_t, kolum::video::kWindow>(bytes));
  *packetSize = found.size;
  return found.isTimeStamped ? 1 : 0;
}
