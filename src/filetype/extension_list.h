// The enabled extensions as hosts' pages show them.
#ifndef KOLUM_FILETYPE_EXTENSION_LIST_H
#define KOLUM_FILETYPE_EXTENSION_LIST_H

#include <optional>
#include <string>

namespace kolum::filetype {

// An XML document; empty if the configuration cannot be read.
std::optional<std::string> extensionList();

}  // namespace kolum::filetype

#endif
