#ifndef KOLUM_ISOLATION_PROGRAM_H
#define KOLUM_ISOLATION_PROGRAM_H

#include <optional>
#include <string>

namespace kolum::isolation {

// The worker's program: beside the library or tool that contains this code, or where it was built.
// Empty if there is none.
std::optional<std::string> workerProgram();

}  // namespace kolum::isolation

#endif
