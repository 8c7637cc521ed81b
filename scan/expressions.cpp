#include "scan/expressions.h"

#include <strings.h>

#include <algorithm>
#include <utility>

namespace kolum::scan {

namespace {

// docs/library.md lists both tables for people.
constexpr const char* kTables[] = {"files",    "videos", "songs",     "photos",
                                   "problems", "file",   "folder",    "document",
                                   "version",  "root",   "json_each", "json_tree"};

// Functions that compute a value from values, without effects and without reading anything else.
// Those that make large values from small ones (randomblob, zeroblob, printf) are left out.
constexpr const char* kFunctions[] = {
    "abs",          "avg",       "ceil",       "ceiling",   "char",     "coalesce",
    "count",        "date",      "datetime",   "floor",     "glob",     "group_concat",
    "has_text",     "hex",       "ifnull",     "iif",       "instr",    "json_array_length",
    "json_extract", "json_type", "json_valid", "julianday", "length",   "like",
    "lower",        "ltrim",     "max",        "min",       "nullif",   "quote",
    "replace",      "round",     "rtrim",      "sign",      "strftime", "substr",
    "substring",    "sum",       "time",       "total",     "trim",     "typeof",
    "unicode",      "unixepoch", "upper",      "->",        "->>",
};

// Names as SQL compares them.
template <std::size_t kSize>
bool contains(const char* const (&names)[kSize], const char* name) {
  return name != nullptr && std::any_of(std::begin(names), std::end(names), [&](const char* row) {
           return strcasecmp(row, name) == 0;
         });
}

int authorize(void*, int action, const char* first, const char* second, const char*, const char*) {
  const bool isAllowed = action == SQLITE_SELECT ||
                         (action == SQLITE_READ && contains(kTables, first)) ||
                         (action == SQLITE_FUNCTION && contains(kFunctions, second));
  return isAllowed ? SQLITE_OK : SQLITE_DENY;
}

constexpr int kStepsBetweenChecks = 10000;  // well below a millisecond

}  // namespace

ReadingOnly::ReadingOnly(Database& database) : database_(database) {
  sqlite3_set_authorizer(database_.handle(), authorize, nullptr);
}

ReadingOnly::~ReadingOnly() {
  sqlite3_set_authorizer(database_.handle(), nullptr, nullptr);
}

Limited::Limited(Database& database, std::chrono::seconds time, std::function<bool()> keepGoing)
    : database_(database),
      end_(time.count() == 0 ? std::chrono::steady_clock::time_point::max()
                             : std::chrono::steady_clock::now() + time),
      keepGoing_(std::move(keepGoing)) {
  sqlite3_progress_handler(database_.handle(), kStepsBetweenChecks, isOver, this);
}

Limited::~Limited() {
  sqlite3_progress_handler(database_.handle(), 0, nullptr, nullptr);
}

int Limited::isOver(void* self) {
  const auto& limited = *static_cast<const Limited*>(self);
  const bool goesOn = std::chrono::steady_clock::now() < limited.end_ &&
                      (!limited.keepGoing_ || limited.keepGoing_());
  return goesOn ? 0 : 1;
}

}  // namespace kolum::scan
