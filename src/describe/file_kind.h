// What a file's name says about its kind.
#ifndef KOLUM_DESCRIBE_FILE_KIND_H
#define KOLUM_DESCRIBE_FILE_KIND_H

#include <kolum/filetype.h>

#include <string>

namespace kolum::describe {

struct FileKind {
  int kind = MEDIA_KIND_NONE;
  const MediaFileInfo* type = nullptr;  // the row of its extension; null for kind NONE
};

// KINDS: bits of the kinds to look for, because some extensions belong to several.
FileKind fileKind(const std::string& name, unsigned kinds = MEDIA_KIND_BITS_ALL);

// The row of the extension in the table of a kind (MEDIA_KIND_*); null if it is not there.
const MediaFileInfo* typeOfKind(const std::string& name, int kind);

// Whether the name is that of a DSD song.
bool isDsdName(const std::string& name);

}  // namespace kolum::describe

#endif
