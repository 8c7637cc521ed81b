// Notices when memory runs out. FFmpeg goes on without what it could not store, and its answer
// would then have holes.
#ifndef KOLUM_ISOLATION_WORKER_MEMORY_H
#define KOLUM_ISOLATION_WORKER_MEMORY_H

namespace kolum::isolation {

// Since the last call.
bool hasMemoryRunOut();

}  // namespace kolum::isolation

#endif
