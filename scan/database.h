// SQLite with owners: a connection, and statements that are prepared once. Errors become
// StoreError.
#ifndef KOLUM_SCAN_DATABASE_H
#define KOLUM_SCAN_DATABASE_H

#include <sqlite3.h>

#include <concepts>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "scan/errors.h"

namespace kolum::scan {

// Names and paths: stored as text if they are UTF-8, else as a blob.
struct Bytes {
  std::string_view value;
};

// Always as a blob.
struct Blob {
  std::string_view value;
};

struct Null {};

class Database {
 public:
  // kImmutable: of a disk that cannot be written; nobody else may be writing.
  enum class Mode { kRead, kImmutable, kWrite };

  // Opens FILE, an absolute path, with everything off that a hostile file could use.
  Database(const std::string& file, Mode mode);
  // One in memory.
  Database();

  const std::string& file() const { return file_; }
  sqlite3* handle() const { return handle_.get(); }
  bool isInTransaction() const { return sqlite3_get_autocommit(handle()) == 0; }

  // Lets tables and views call functions that SQLite does not count as harmless in the schema of a
  // stranger, those of JSON among them. For schemas that are known to be ours.
  void trustSchema();
  // SQL without results.
  void execute(const char* sql);
  std::int64_t number(const char* sql);
  // Kept until the end, by the text's address: for literals.
  sqlite3_stmt* prepared(const char* sql);

  // Runs WORK as a whole: in a transaction of its own, or in a part of the present one. If it
  // throws, nothing of it remains.
  void atomically(const std::function<void()>& work);
  // Runs WORK, which only reads, on the database of one moment, whatever others write meanwhile.
  void atOneMoment(const std::function<void()>& work);
  void rollback() noexcept;

  [[noreturn]] void fail(int code) const;

 private:
  struct Closer {
    void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };

  void open(const char* name, int flags);
  void harden();

  std::string file_;
  std::unique_ptr<sqlite3, Closer> handle_;
  std::map<const char*, std::unique_ptr<sqlite3_stmt, Closer>> statements_;
};

// One run of a statement. Bound texts must outlive it.
class Run {
 public:
  // SQL is a literal.
  template <typename... Values>
  Run(Database& database, const char* sql, const Values&... values)
      : Run(database, database.prepared(sql)) {
    (bind(values), ...);
  }
  Run(Database& database, sqlite3_stmt* statement) : database_(database), statement_(statement) {}
  ~Run() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
  }
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  // The next parameter.
  template <std::integral Number>
  void bind(Number number) {
    check(sqlite3_bind_int64(statement_, ++bound_, static_cast<sqlite3_int64>(number)));
  }
  void bind(std::string_view text);
  void bind(Bytes bytes);
  void bind(Blob blob);
  void bind(Null) { ++bound_; }

  // Whether there is a (further) row.
  bool next();
  // For statements without rows.
  void finish() {
    while (next()) {
    }
  }

  bool isNull(int column) const { return sqlite3_column_type(statement_, column) == SQLITE_NULL; }
  std::int64_t number(int column) const { return sqlite3_column_int64(statement_, column); }
  std::uint64_t bits(int column) const { return static_cast<std::uint64_t>(number(column)); }
  std::string text(int column) const;  // of any type, all bytes

 private:
  void check(int code) const {
    if (code != SQLITE_OK) database_.fail(code);
  }

  Database& database_;
  sqlite3_stmt* statement_;
  int bound_ = 0;
};

}  // namespace kolum::scan

#endif
