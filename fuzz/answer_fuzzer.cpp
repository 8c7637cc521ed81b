// Reads the bytes as a server's answer: the whole buffer of its text must be readable.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "server/answer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  namespace wire = MediaLibrary::LUM::wire;
  kolum::server::Buffer buffer = {};
  std::copy_n(data, std::min(size, wire::kAnswerReadMax), buffer.begin());
  MediaLibrary::LUM::SocketResp_t answer = {};
  if (!kolum::server::takeAnswer(buffer, answer)) return 0;
  if ((answer.data != nullptr) != (answer.length != 0)) std::abort();
  if (answer.data != nullptr) {
    const std::size_t room = wire::kAnswerTextMax + 1;
    if (std::memchr(answer.data, 0, room) == nullptr) std::abort();
    if (std::memcmp(answer.data, &buffer[wire::kAnswerTextOffset], room) != 0) std::abort();
  }
  std::free(answer.data);
  return 0;
}
