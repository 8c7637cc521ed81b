// A server's answer, byte by byte.
#ifndef KOLUM_SERVER_ANSWER_H
#define KOLUM_SERVER_ANSWER_H

#include <kolum/server.h>

#include <array>

namespace kolum::server {

using Buffer = std::array<char, MediaLibrary::LUM::wire::kBufferSize>;

// Fills RESP from what a server sent, zeroes behind it. Returns false when memory runs out.
bool takeAnswer(const Buffer& buffer, MediaLibrary::LUM::SocketResp_t& resp);

}  // namespace kolum::server

#endif
