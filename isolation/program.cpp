#include "isolation/program.h"

#include "base/own_folder.h"

namespace kolum::isolation {

namespace {

constexpr const char* kFolders[] = {KOLUM_WORKER_FROM_LIBRARY, KOLUM_WORKER_FROM_TOOL,
                                    "../isolation", "../../isolation"};

}  // namespace

std::optional<std::string> workerProgram() {
  return programNear(kFolders, "kolum-worker");
}

}  // namespace kolum::isolation
