#include <kolum/server.h>
#include <kolum/socket.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <exception>

#include "ipc/answer.h"

using kolum::ipc::Buffer;
using MediaLibrary::LUM::SocketResp_t;
using MediaLibrary::LUM::UnixSocket;
namespace wire = MediaLibrary::LUM::wire;

const char* kLumServerStatusName[5] = {"idle", "busy", "stop", "pause", "sleep"};

namespace {

static_assert(wire::kRequestPayloadMax == 4080 && wire::kAnswerTextMax == 4071);

template <typename Number>
void put(char* at, Number number) {
  static_assert(sizeof number == 8);
  std::memcpy(at, &number, sizeof number);
}

// Without DATA the length field stays 0 although LEN zero bytes follow: wanted, servers count on
// it.
void buildRequest(Buffer& buffer, int command, const char* data, std::size_t len) {
  buffer.fill(0);
  put(&buffer[wire::kRequestCommandOffset], std::int64_t{command});
  if (data == nullptr) return;
  put(&buffer[wire::kRequestLengthOffset], std::uint64_t{len});
  if (len > 0) std::memcpy(&buffer[wire::kRequestPayloadOffset], data, len);
}

int exchange(SocketResp_t& resp, int command, const char* data, std::size_t len) {
  Buffer buffer;
  UnixSocket server;
  if (server.Open(wire::kSocketPath) != 0) return LUM_COMMAND_FAILED;
  if (server.Connect(wire::kTimeOutSeconds, 0) != 0) return LUM_COMMAND_FAILED;
  buildRequest(buffer, command, data, len);
  if (server.Write(buffer.data(), wire::kRequestPayloadOffset + len) < 0) return LUM_COMMAND_FAILED;
  buffer.fill(0);
  if (server.Read(buffer.data(), wire::kAnswerReadMax) < 0) return LUM_COMMAND_FAILED;
  if (!kolum::ipc::takeAnswer(buffer, resp)) return LUM_COMMAND_FAILED;
  return resp.result == wire::kResultSuccess ? LUM_COMMAND_OK : LUM_COMMAND_FAILED;
}

}  // namespace

int sendCommand(SocketResp_t* resp, int command, const char* data, unsigned long len) noexcept {
  if (resp == nullptr || len > wire::kRequestPayloadMax) return LUM_COMMAND_FAILED;
  try {
    return exchange(*resp, command, data, len);
  } catch (const std::exception&) {
    return LUM_COMMAND_FAILED;
  }
}

int sendActionToLumServer(int command, int value1, int value2) noexcept {
  std::array<char, 16> payload{};
  put(&payload[0], std::int64_t{value1});
  put(&payload[8], std::int64_t{value2});

  SocketResp_t resp{};
  // A text that comes with a failure stays allocated: kept as it is, no caller could see a change.
  // NOLINTNEXTLINE(clang-analyzer-unix.Malloc)
  if (sendCommand(&resp, command, payload.data(), payload.size()) != 0) return LUM_ACTION_FAILED;
  std::free(resp.data);
  return LUM_COMMAND_OK;
}
