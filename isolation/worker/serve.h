#ifndef KOLUM_ISOLATION_WORKER_SERVE_H
#define KOLUM_ISOLATION_WORKER_SERVE_H

#include <cstdint>

namespace kolum::isolation {

// Says hello on SOCKET, and answers requests until the host closes it.
void serve(int socket, std::uint32_t layers);

}  // namespace kolum::isolation

#endif
