// The library of media files that commands read and fill.
#ifndef KOLUM_TOOL_FILES_LIBRARY_H
#define KOLUM_TOOL_FILES_LIBRARY_H

#include <string>

#include "scan/values.h"

namespace kolum::tool {

class Syntax;

// "--library FILE": adds the option.
void addLibraryOption(Syntax& syntax, std::string& file);

// The file that was given; else library.db in $XDG_DATA_HOME/kolum/, or in ~/.local/share/kolum/.
// Throws UsageError if there is no home to look in.
std::string libraryFile(const std::string& given);

// Of this program's documents: changes with kolum and with FFmpeg.
scan::Version documentVersion();

// Absolute, with the links resolved in what exists of it; without a "/" at the end, except for "/".
std::string resolvedPath(const std::string& path);

}  // namespace kolum::tool

#endif
