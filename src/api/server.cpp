#include <kolum/server.h>

#include <array>
#include <cstdlib>
#include <cstring>

#include "api/guarded.h"
#include "server/client.h"

namespace wire = MediaLibrary::LUM::wire;
using MediaLibrary::LUM::SocketResp_t;

const char* kLumServerStatusName[5] = {"idle", "busy", "stop", "pause", "sleep"};

namespace {

int send(SocketResp_t* resp, int command, const char* data, unsigned long length) noexcept {
  return kolum::api::guarded(static_cast<int>(LUM_COMMAND_FAILED), [&] {
    if (resp == nullptr || length > wire::kRequestPayloadMax)
      return static_cast<int>(LUM_COMMAND_FAILED);
    return kolum::server::exchange(*resp, command, data, length)
               ? static_cast<int>(LUM_COMMAND_OK)
               : static_cast<int>(LUM_COMMAND_FAILED);
  });
}

}  // namespace

int sendCommand(SocketResp_t* resp, int command, const char* data, unsigned long len) noexcept {
  return send(resp, command, data, len);
}

int sendActionToLumServer(int command, int value1, int value2) noexcept {
  const std::array<std::int64_t, 2> values = {value1, value2};
  std::array<char, sizeof values> payload{};
  std::memcpy(payload.data(), values.data(), payload.size());
  SocketResp_t resp{};
  // A text that comes with a failure is not freed; kept so, as no caller could see a change.
  // NOLINTNEXTLINE(clang-analyzer-unix.Malloc)
  if (send(&resp, command, payload.data(), payload.size()) != 0) return LUM_ACTION_FAILED;
  std::free(resp.data);
  return LUM_COMMAND_OK;
}
