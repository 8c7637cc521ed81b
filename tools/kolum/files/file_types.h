// The four file type tables, and how they are named on the command line.
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
// Null for a kind without a table.
const FileTypeTable* fileTypesOfKind(int kind);

// "--kinds video,music": adds the option. kindBits turns its values into classification's bits, or
// all bits if there are none. Throws UsageError for an unknown kind.
void addKindsOption(Syntax& syntax, std::vector<std::string>& kinds);
unsigned kindBits(const std::vector<std::string>& kinds);

// "--mask KIND=MASK": adds the option. setExclusionMask sets the mask in a value, and throws
// UsageError if it is invalid.
void addMasksOption(Syntax& syntax, std::vector<std::string>& masks);
void setExclusionMask(const std::string& value);

// What a table's row says beyond its name: only JSON keys, except for songs' identifiers.
void addFileTypeData(Result& result, const FileTypeTable& table, std::size_t row);

}  // namespace kolum::tool

#endif
