// One exchange with the media-library server.
#ifndef KOLUM_SERVER_CLIENT_H
#define KOLUM_SERVER_CLIENT_H

#include <kolum/server.h>

#include <cstddef>

namespace kolum::server {

// Sends a command with LENGTH bytes of payload (at most wire::kRequestPayloadMax; DATA may be null)
// and reads the answer. True if the server answered with success. RESP stays untouched if it did
// not answer.
bool exchange(MediaLibrary::LUM::SocketResp_t& resp, int command, const char* data,
              std::size_t length);

}  // namespace kolum::server

#endif
