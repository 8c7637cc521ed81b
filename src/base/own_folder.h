// Programs that are installed with the library or tool that contains this code.
#ifndef KOLUM_BASE_OWN_FOLDER_H
#define KOLUM_BASE_OWN_FOLDER_H

#include <optional>
#include <span>
#include <string>

namespace kolum {

// The first program NAME in one of FOLDERS, which are seen from the folder of the library or tool.
// Empty if there is none.
std::optional<std::string> programNear(std::span<const char* const> folders,
                                       const std::string& name);

}  // namespace kolum

#endif
