// Decodes a server's answer.
#ifndef KOLUM_SERVER_ANSWER_H
#define KOLUM_SERVER_ANSWER_H

#include <kolum/server.h>

#include <array>

namespace kolum::server {

using Buffer = std::array<char, MediaLibrary::LUM::wire::kBufferSize>;

// Fills RESP from the bytes that a server sent, padded with zeros. False if memory runs out.
bool takeAnswer(const Buffer& buffer, MediaLibrary::LUM::SocketResp_t& resp);

}  // namespace kolum::server

#endif
