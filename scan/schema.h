// The schema of a library's database, its versions, and the way from one to the next.
#ifndef KOLUM_SCAN_SCHEMA_H
#define KOLUM_SCAN_SCHEMA_H

#include <span>

#include "scan/database.h"

namespace kolum::scan {

// Marks a database as a library ("KOLM"), in its header.
inline constexpr int kApplicationId = 0x4B4F4C4D;

// SQL that leads from the version of its index to the next; an empty database has version 0. Steps
// are only ever added: libraries of every version exist. Columns of the views have a table of their
// own (columns.h), which makes steps.
std::span<const char* const> migrations();
int newestSchema();

// What a database holds. Throws kNotALibrary for one of something else, and kNewer for a version
// beyond the newest.
enum class Content { kNothing, kOlder, kPresent };
Content contentOf(Database& database, std::span<const char* const> steps = migrations());

// Throws kNotALibrary unless the tables, indexes and views are those that the migrations make: a
// query on others could mean anything. Further ones, of the library's owner, may exist. Trusts them
// from then on.
void checkSchema(Database& database, std::span<const char* const> steps = migrations());

// Brings a database to the newest version, all at once or not at all. Checks what it comes from.
void migrate(Database& database, std::span<const char* const> steps = migrations());

}  // namespace kolum::scan

#endif
