#ifndef KOLUM_ISOLATION_WORKER_SERVE_H
#define KOLUM_ISOLATION_WORKER_SERVE_H

#include <cstdint>

namespace kolum::isolation {

// Loads what readers would otherwise load at their first use. In the process that all workers are
// forked from, so that it happens once, and while there still are files.
void prepare();

// Says hello on SOCKET, and answers requests until the host closes it.
void serve(int socket, std::uint32_t layers);

}  // namespace kolum::isolation

#endif
