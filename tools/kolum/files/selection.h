// Which entries of folders count, by their names.
#ifndef KOLUM_TOOL_FILES_SELECTION_H
#define KOLUM_TOOL_FILES_SELECTION_H

#include <string>
#include <string_view>
#include <vector>

#include "scan/walk.h"

namespace kolum::tool {

class Syntax;

// "--exclude GLOB": adds the option.
void addExcludeOption(Syntax& syntax, std::vector<std::string>& globs);

// Whether an entry is left out: a hidden one, programs' files for the media, or one that a GLOB
// matches. PATH is relative to the named folder.
bool isLeftOut(std::string_view path, const std::vector<std::string>& globs);

// For walks of the scan: media by their names, or with BYCONTENT every file.
scan::Selection mediaSelection(std::vector<std::string> globs, bool byContent);

}  // namespace kolum::tool

#endif
