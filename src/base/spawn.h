// Owners of what posix_spawn() takes.
#ifndef KOLUM_BASE_SPAWN_H
#define KOLUM_BASE_SPAWN_H

#include <spawn.h>

namespace kolum {

struct SpawnActions {
  SpawnActions() { posix_spawn_file_actions_init(&value); }
  ~SpawnActions() { posix_spawn_file_actions_destroy(&value); }
  SpawnActions(const SpawnActions&) = delete;
  SpawnActions& operator=(const SpawnActions&) = delete;
  posix_spawn_file_actions_t value = {};
};

struct SpawnAttributes {
  SpawnAttributes() { posix_spawnattr_init(&value); }
  ~SpawnAttributes() { posix_spawnattr_destroy(&value); }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;
  posix_spawnattr_t value = {};
};

}  // namespace kolum

#endif
