// SQL expressions of people: what they may do, and for how long.
#ifndef KOLUM_SCAN_EXPRESSIONS_H
#define KOLUM_SCAN_EXPRESSIONS_H

#include <chrono>
#include <functional>

#include "scan/database.h"

namespace kolum::scan {

// While it exists, statements can only be prepared if they do no more than to select from the
// library's tables and views, with functions that compute a value from values.
class ReadingOnly {
 public:
  explicit ReadingOnly(Database& database);
  ~ReadingOnly();
  ReadingOnly(const ReadingOnly&) = delete;
  ReadingOnly& operator=(const ReadingOnly&) = delete;

 private:
  Database& database_;
};

// While it exists, statements end with kTooLong when their time is up (0: never), and when
// KEEPGOING (if there is one) returns false.
class Limited {
 public:
  Limited(Database& database, std::chrono::seconds time, std::function<bool()> keepGoing);
  ~Limited();
  Limited(const Limited&) = delete;
  Limited& operator=(const Limited&) = delete;

 private:
  static int isOver(void* self);

  Database& database_;
  std::chrono::steady_clock::time_point end_;
  std::function<bool()> keepGoing_;
};

}  // namespace kolum::scan

#endif
