// Looking for a text in others, for SQL.
#ifndef KOLUM_SCAN_TEXT_SEARCH_H
#define KOLUM_SCAN_TEXT_SEARCH_H

#include <sqlite3.h>

#include <string>
#include <string_view>

namespace kolum::scan {

// With lower-case letters instead of capitals, in all scripts. Bytes that are not UTF-8 stay.
std::string foldedCase(std::string_view text);

// The SQL function has_text(TEXT, PART): whether the part is in the text, with letters in either
// case. The text may be a blob. NULL if it is NULL. Returns SQLite's code.
int addTextSearch(sqlite3* database);

}  // namespace kolum::scan

#endif
