// Which files of a library's roots count.
#ifndef KOLUM_TOOL_FILES_SELECTION_H
#define KOLUM_TOOL_FILES_SELECTION_H

#include <string>
#include <vector>

#include "scan/walk.h"

namespace kolum::tool {

// Media files by their names, and what isLeftOut() leaves.
scan::Selection mediaSelection(std::vector<std::string> excluded);

}  // namespace kolum::tool

#endif
