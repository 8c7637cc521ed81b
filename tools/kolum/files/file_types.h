// The four file type tables and the ways to name them on the command line.
#ifndef KOLUM_TOOL_FILES_FILE_TYPES_H
#define KOLUM_TOOL_FILES_FILE_TYPES_H

#include <kolum/filetype.h>

#include <span>
#include <string>
#include <vector>

#include "terminal/output.h"

namespace kolum::tool {

class Syntax;

struct FileTypeTable {
  int kind;             // MEDIA_KIND_*
  unsigned bit;         // MEDIA_KIND_BIT_*
  unsigned maskNumber;  // MEDIA_KIND_MASK_*
  std::string name;
  std::span<const MediaFileInfo> rows;
};

std::span<const FileTypeTable> fileTypeTables();
// Null for a kind that has no table.
const FileTypeTable* fileTypesOfKind(int kind);

// "--kinds video,music": adds the option; kindBits turns its values into classification's bits, all
// of them when none was given. Throws UsageError for an unknown kind.
void addKindsOption(Syntax& syntax, std::vector<std::string>& kinds);
unsigned kindBits(const std::vector<std::string>& kinds);

// "--mask KIND=MASK": adds the option; setExclusionMask sets the mask that a value names, and
// throws UsageError when it cannot be.
void addMasksOption(Syntax& syntax, std::vector<std::string>& masks);
void setExclusionMask(const std::string& value);

// What a table's row says beyond its name: JSON keys only, except for songs' identifiers.
void addFileTypeData(Result& result, const FileTypeTable& table, std::size_t row);

// The row that a file's name belongs to, when it is of the kind of BIT; null otherwise.
const MediaFileInfo* fileTypeOfName(const std::string& name, unsigned bit);

// "mimeType" by a file's name, when it is of the kind of BIT; the row is returned, null otherwise.
const MediaFileInfo* addMimeTypeOfName(Result& result, const std::string& name, unsigned bit);

// Whether a file's name is that of a DSD song.
bool isDsdName(const std::string& name);

}  // namespace kolum::tool

#endif
