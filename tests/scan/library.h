// Libraries for tests, and a look into them with SQLite alone.
#ifndef KOLUM_TESTS_SCAN_LIBRARY_H
#define KOLUM_TESTS_SCAN_LIBRARY_H

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <vector>

#include "scan/store.h"

namespace kolum::test {

inline const scan::Version kToday = {1, "readers of today"};

// Different for every number.
inline scan::Identity identity(std::uint64_t number) {
  return {.device = 7,
          .inode = number,
          .size = static_cast<std::int64_t>(number * 1000),
          .mtimeNs = 1400000000000000000 + static_cast<std::int64_t>(number),
          .ctimeNs = 1500000000000000000 + static_cast<std::int64_t>(number)};
}

// What SQLite answers: the first column of each row.
inline std::vector<std::string> ask(const std::string& library, const std::string& sql) {
  std::vector<std::string> rows;
  sqlite3* database = nullptr;
  EXPECT_EQ(sqlite3_open(library.c_str(), &database), SQLITE_OK);
  const auto visit = [](void* into, int, char** columns, char**) {
    static_cast<std::vector<std::string>*>(into)->emplace_back(columns[0] == nullptr ? "NULL"
                                                                                     : columns[0]);
    return 0;
  };
  char* message = nullptr;
  sqlite3_exec(database, sql.c_str(), visit, &rows, &message);
  if (message != nullptr) ADD_FAILURE() << sql << ": " << message;
  sqlite3_free(message);
  sqlite3_close(database);
  return rows;
}

inline std::string askOne(const std::string& library, const std::string& sql) {
  const std::vector<std::string> rows = ask(library, sql);
  return rows.size() == 1 ? rows.front() : std::to_string(rows.size()) + " rows";
}

inline void expectSound(const std::string& library) {
  EXPECT_EQ(askOne(library, "PRAGMA integrity_check"), "ok");
  EXPECT_EQ(ask(library, "PRAGMA foreign_key_check"), std::vector<std::string>());
}

// Expects WORK to throw a StoreError of this kind, and returns its text.
template <typename Work>
std::string failure(scan::StoreError::Kind kind, const Work& work) {
  try {
    work();
  } catch (const scan::StoreError& error) {
    EXPECT_EQ(static_cast<int>(error.kind()), static_cast<int>(kind)) << error.what();
    return error.what();
  }
  ADD_FAILURE() << "nothing was thrown";
  return "";
}

}  // namespace kolum::test

#endif
