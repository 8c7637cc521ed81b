// Starting programs.
#ifndef KOLUM_BASE_SPAWN_H
#define KOLUM_BASE_SPAWN_H

#include <spawn.h>
#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace kolum {

// What becomes of descriptors.
struct SpawnActions {
  SpawnActions() { posix_spawn_file_actions_init(&value); }
  ~SpawnActions() { posix_spawn_file_actions_destroy(&value); }
  SpawnActions(const SpawnActions&) = delete;
  SpawnActions& operator=(const SpawnActions&) = delete;
  posix_spawn_file_actions_t value = {};
};

struct SpawnOptions {
  // No signal is blocked or ignored; otherwise as in the calling thread.
  bool hasDefaultSignals = false;
  // "NAME=VALUE"; otherwise that of this process.
  std::optional<std::vector<std::string>> environment = {};
};

// The new process leads a process group of its own, so that Ctrl-C does not reach it. ARGUMENTS
// begin with the program's path. -1 with errno if it cannot be started.
pid_t spawn(const std::vector<std::string>& arguments, const SpawnActions& actions,
            const SpawnOptions& options = {});

}  // namespace kolum

#endif
