#include <kolum/server.h>
#include <kolum/socket.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <exception>

using MediaLibrary::LUM::SocketResp_t;
using MediaLibrary::LUM::UnixSocket;
namespace wire = MediaLibrary::LUM::wire;

const char* kLumServerStatusName[5] = {"idle", "busy", "stop", "pause", "sleep"};

namespace {

constexpr int kFailure = 1;
constexpr int kActionFailure = 3;

using Buffer = std::array<char, wire::kBufferSize>;

static_assert(wire::kRequestPayloadMax == 4080 && wire::kAnswerTextMax == 4071);

template <typename Number>
void put(char* at, Number number) {
  static_assert(sizeof number == 8);
  std::memcpy(at, &number, sizeof number);
}

template <typename Number>
Number get(const Buffer& buffer, std::size_t offset) {
  Number number{};
  std::memcpy(&number, buffer.data() + offset, sizeof number);
  return number;
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

// A copy of the whole room for the text, so that whatever length the server gave for it, up to that
// room, is there to be read. Null when memory runs out.
char* copyAnswerText(const Buffer& buffer) {
  constexpr std::size_t kSize = wire::kBufferSize - wire::kAnswerTextOffset;
  char* text = static_cast<char*>(std::malloc(kSize));
  if (text != nullptr) std::memcpy(text, &buffer[wire::kAnswerTextOffset], kSize);
  return text;
}

// Returns false when memory runs out.
bool takeAnswer(const Buffer& buffer, SocketResp_t& resp) {
  resp.result = get<std::int64_t>(buffer, wire::kAnswerResultOffset);
  resp.length = 0;
  const auto length = get<std::uint64_t>(buffer, wire::kAnswerLengthOffset);
  if (length == 0) return true;
  char* text = copyAnswerText(buffer);
  if (text == nullptr) return false;
  resp.length = length;
  resp.data = text;
  return true;
}

int exchange(SocketResp_t& resp, int command, const char* data, std::size_t len) {
  Buffer buffer;
  UnixSocket server;
  if (server.Open(wire::kSocketPath) != 0) return kFailure;
  if (server.Connect(wire::kTimeOutSeconds, 0) != 0) return kFailure;
  buildRequest(buffer, command, data, len);
  if (server.Write(buffer.data(), wire::kRequestPayloadOffset + len) < 0) return kFailure;
  buffer.fill(0);
  if (server.Read(buffer.data(), wire::kAnswerReadMax) < 0) return kFailure;
  if (!takeAnswer(buffer, resp)) return kFailure;
  return resp.result == wire::kResultSuccess ? 0 : kFailure;
}

}  // namespace

int sendCommand(SocketResp_t* resp, int command, const char* data, unsigned long len) noexcept {
  if (resp == nullptr || len > wire::kRequestPayloadMax) return kFailure;
  try {
    return exchange(*resp, command, data, len);
  } catch (const std::exception&) {
    return kFailure;
  }
}

int sendActionToLumServer(int command, int value1, int value2) noexcept {
  std::array<char, 16> payload{};
  put(&payload[0], std::int64_t{value1});
  put(&payload[8], std::int64_t{value2});

  SocketResp_t resp{};
  // A text that comes with a failure stays allocated: kept as it is, no caller could see a change.
  // NOLINTNEXTLINE(clang-analyzer-unix.Malloc)
  if (sendCommand(&resp, command, payload.data(), payload.size()) != 0) return kActionFailure;
  std::free(resp.data);
  return 0;
}
