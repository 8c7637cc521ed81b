#include "server/answer.h"

#include <cstdlib>
#include <cstring>

using MediaLibrary::LUM::SocketResp_t;
namespace wire = MediaLibrary::LUM::wire;

namespace kolum::server {

namespace {

template <typename Number>
Number get(const Buffer& buffer, std::size_t offset) {
  Number number{};
  std::memcpy(&number, buffer.data() + offset, sizeof number);
  return number;
}

// A copy of the whole space for the text, so that any length the server gave, up to that space, can
// be read. Null if memory runs out.
char* copyAnswerText(const Buffer& buffer) {
  constexpr std::size_t kSize = wire::kBufferSize - wire::kAnswerTextOffset;
  char* text = static_cast<char*>(std::malloc(kSize));
  if (text != nullptr) std::memcpy(text, &buffer[wire::kAnswerTextOffset], kSize);
  return text;
}

}  // namespace

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

}  // namespace kolum::server
