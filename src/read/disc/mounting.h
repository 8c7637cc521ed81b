// What this machine needs to mount disc images.
#ifndef KOLUM_READ_DISC_MOUNTING_H
#define KOLUM_READ_DISC_MOUNTING_H

#include <optional>
#include <string>

namespace kolum::disc {

// "known" if the running kernel has the file system, "as a module" if it may load MODULE.
std::optional<std::string> fileSystem(const std::string& name, const std::string& module);

// The first thing that keeps this process from mounting an image, in words; empty if nothing does.
std::optional<std::string> mountingObstacle();

}  // namespace kolum::disc

#endif
