// Classification of files by their names.
#ifndef KOLUM_FILETYPE_INDEX_H
#define KOLUM_FILETYPE_INDEX_H

#include <kolum/filetype.h>

#include <cstdint>
#include <optional>
#include <span>

#include "filetype/tables.h"

namespace kolum::filetype {

struct Classified {
  int result = MEDIA_KIND_NONE;
  unsigned row = 0;  // counted from 1; 0 if the name has no row
};

// DOT is the last "." in the name. KINDS are the bits of the kinds to look for. Call buildIndex()
// first.
Classified classify(const char* fileName, const char* dot, unsigned kinds);

// Excludes the rows whose bits are set, in addition to those that are always excluded.
void setExclusions(KindNumber kind, std::uint64_t rows);

// Fills the buckets of all kinds, at the first call.
void buildIndex();
// The buckets of a kind; empty before buildIndex().
std::span<MediaHashNode* const> bucketsOf(KindNumber kind);

}  // namespace kolum::filetype

#endif
