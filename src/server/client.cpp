#include "server/client.h"

#include <cstdint>
#include <cstring>

#include "server/answer.h"
#include "server/socket.h"

namespace wire = MediaLibrary::LUM::wire;

namespace kolum::server {

namespace {

static_assert(wire::kRequestPayloadMax == 4080 && wire::kAnswerTextMax == 4071);

template <typename Number>
void put(char* at, Number number) {
  static_assert(sizeof number == 8);
  std::memcpy(at, &number, sizeof number);
}

// Without DATA the length field stays 0 although LENGTH zero bytes follow: servers depend on it.
void buildRequest(Buffer& buffer, int command, const char* data, std::size_t length) {
  buffer.fill(0);
  put(&buffer[wire::kRequestCommandOffset], std::int64_t{command});
  if (data == nullptr) return;
  put(&buffer[wire::kRequestLengthOffset], std::uint64_t{length});
  if (length > 0) std::memcpy(&buffer[wire::kRequestPayloadOffset], data, length);
}

}  // namespace

bool exchange(MediaLibrary::LUM::SocketResp_t& resp, int command, const char* data,
              std::size_t length) {
  Buffer buffer;
  Socket socket;
  const SocketFields server = socket.fields();
  if (open(server, wire::kSocketPath) != UNIX_SOCKET_OK) return false;
  if (connect(server, wire::kTimeOutSeconds, 0) != UNIX_SOCKET_OK) return false;
  buildRequest(buffer, command, data, length);
  if (write(server, buffer.data(), wire::kRequestPayloadOffset + length) < 0) return false;
  buffer.fill(0);
  if (read(server, buffer.data(), wire::kAnswerReadMax) < 0) return false;
  return takeAnswer(buffer, resp) && resp.result == wire::kResultSuccess;
}

}  // namespace kolum::server
