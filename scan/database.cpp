#include "scan/database.h"

#include <cerrno>
#include <cstring>
#include <exception>
#include <new>

#include "base/utf8.h"
#include "scan/text_search.h"

namespace kolum::scan {

namespace {

using Kind = StoreError::Kind;

// How long another SQL client may hold what is needed; scans themselves exclude each other.
constexpr int kBusyMilliseconds = 5000;
// No value of a library is nearly as long.
constexpr int kLongestValue = 16 << 20;
constexpr int kLongestStatement = 1 << 20;

struct Setting {
  int option;
  int value;
};

// A database file is hostile input: its schema may hold triggers and views with functions in them.
constexpr Setting kSettings[] = {
    {SQLITE_DBCONFIG_DEFENSIVE, 1},
    {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
    {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
    {SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0},
    {SQLITE_DBCONFIG_ENABLE_FTS3_TOKENIZER, 0},
    {SQLITE_DBCONFIG_ENABLE_FKEY, 1},
    {SQLITE_DBCONFIG_DQS_DML, 0},
    {SQLITE_DBCONFIG_DQS_DDL, 0},
};

struct Limit {
  int category;
  int value;
};

constexpr Limit kLimits[] = {
    {SQLITE_LIMIT_LENGTH, kLongestValue},
    {SQLITE_LIMIT_SQL_LENGTH, kLongestStatement},
    {SQLITE_LIMIT_ATTACHED, 0},
    {SQLITE_LIMIT_WORKER_THREADS, 0},
};

Kind kindOfErrno(int error) {
  switch (error) {
    case ENOSPC:
    case EDQUOT:
      return Kind::kDiskFull;
    case EROFS:
    case EACCES:
    case EPERM:
      return Kind::kReadOnly;
    default:
      return Kind::kOther;
  }
}

Kind kindOf(int code, int error) {
  switch (code & 0xFF) {
    case SQLITE_FULL:
      return Kind::kDiskFull;
    case SQLITE_READONLY:
      return Kind::kReadOnly;
    case SQLITE_NOTADB:
      return Kind::kNotALibrary;
    case SQLITE_CORRUPT:
      return Kind::kDamaged;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return Kind::kInUse;
    case SQLITE_INTERRUPT:
      return Kind::kTooLong;
    case SQLITE_CANTOPEN: {
      const Kind kind = kindOfErrno(error);
      return kind == Kind::kOther ? Kind::kCannotOpen : kind;
    }
    case SQLITE_IOERR:
      return kindOfErrno(error);
    default:
      return Kind::kOther;
  }
}

// In words; for kinds without, SQLite's own.
const char* reasonOf(Kind kind) {
  switch (kind) {
    case Kind::kDiskFull:
      return "the disk is full";
    case Kind::kReadOnly:
      return "cannot be written";
    case Kind::kNotALibrary:
      return "not a library of kolum";
    case Kind::kDamaged:
      return "the database is damaged";
    case Kind::kInUse:
      return "another program is writing to the database";
    case Kind::kTooLong:
      return "the query took too long";
    default:
      return nullptr;
  }
}

}  // namespace

Database::Database(const std::string& file, Mode mode) : file_(file) {
  switch (mode) {
    case Mode::kWrite:
      open(file.c_str(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
      break;
    case Mode::kRead:
      open(file.c_str(), SQLITE_OPEN_READONLY);
      break;
    case Mode::kImmutable: {
      // A URI, in which some characters of file names have a meaning.
      std::string uri = "file:";
      for (const char c : file) {
        if (std::strchr("%?#", c) == nullptr) {
          uri += c;
        } else {
          constexpr char kDigits[] = "0123456789ABCDEF";
          const auto byte = static_cast<unsigned char>(c);
          uri.append({'%', kDigits[byte >> 4], kDigits[byte & 0xF]});
        }
      }
      open((uri + "?immutable=1").c_str(), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
      break;
    }
  }
  harden();
}

Database::Database() : file_("memory") {
  open(":memory:", SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  harden();
}

void Database::open(const char* name, int flags) {
  sqlite3* handle = nullptr;
  const int code = sqlite3_open_v2(name, &handle, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  handle_.reset(handle);
  if (handle == nullptr) throw std::bad_alloc();
  sqlite3_extended_result_codes(handle, 1);
  if (code != SQLITE_OK) fail(code);
}

void Database::harden() {
  for (const Setting& setting : kSettings)
    sqlite3_db_config(handle(), setting.option, setting.value, nullptr);
  for (const Limit& limit : kLimits) sqlite3_limit(handle(), limit.category, limit.value);
  sqlite3_busy_timeout(handle(), kBusyMilliseconds);
  if (const int code = addTextSearch(handle()); code != SQLITE_OK) fail(code);
  execute("PRAGMA mmap_size = 0");  // a file that gets shorter would end the process
  execute("PRAGMA cell_size_check = ON");
}

void Database::trustSchema() {
  sqlite3_db_config(handle(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, 1, nullptr);
}

void Database::fail(int code) const {
  if ((code & 0xFF) == SQLITE_NOMEM) throw std::bad_alloc();
  const Kind kind = kindOf(code, sqlite3_system_errno(handle()));
  const char* reason = reasonOf(kind);
  throw StoreError(kind, file_ + ": " + (reason != nullptr ? reason : sqlite3_errmsg(handle())));
}

void Database::execute(const char* sql) {
  const int code = sqlite3_exec(handle(), sql, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) fail(code);
}

std::int64_t Database::number(const char* sql) {
  Run run(*this, sql);
  return run.next() ? run.number(0) : 0;
}

sqlite3_stmt* Database::prepared(const char* sql) {
  auto& kept = statements_[sql];
  if (kept == nullptr) {
    sqlite3_stmt* statement = nullptr;
    const int code =
        sqlite3_prepare_v3(handle(), sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    kept.reset(statement);
    if (code != SQLITE_OK) fail(code);
  }
  return kept.get();
}

void Database::atomically(const std::function<void()>& work) {
  const bool isPart = isInTransaction();
  Run(*this, isPart ? "SAVEPOINT part" : "BEGIN IMMEDIATE").finish();
  try {
    work();
    Run(*this, isPart ? "RELEASE part" : "COMMIT").finish();
  } catch (...) {
    if (!isPart) {
      rollback();
    } else if (isInTransaction()) {  // else SQLite has rolled all of it back
      sqlite3_exec(handle(), "ROLLBACK TO part; RELEASE part", nullptr, nullptr, nullptr);
    }
    throw;
  }
}

void Database::atOneMoment(const std::function<void()>& work) {
  Run(*this, "BEGIN").finish();
  try {
    work();
  } catch (...) {
    rollback();
    throw;
  }
  Run(*this, "COMMIT").finish();
}

void Database::rollback() noexcept {
  if (isInTransaction()) sqlite3_exec(handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void Run::bind(std::string_view text) {
  check(sqlite3_bind_text64(statement_, ++bound_, text.data() == nullptr ? "" : text.data(),
                            text.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void Run::bind(Bytes bytes) {
  if (isUtf8(bytes.value)) return bind(bytes.value);
  bind(Blob{bytes.value});
}

void Run::bind(Blob blob) {
  check(sqlite3_bind_blob64(statement_, ++bound_, blob.value.data(), blob.value.size(),
                            SQLITE_STATIC));
}

bool Run::next() {
  const int code = sqlite3_step(statement_);
  if (code == SQLITE_ROW) return true;
  if (code != SQLITE_DONE) database_.fail(code);
  return false;
}

std::string Run::text(int column) const {
  const void* bytes = sqlite3_column_blob(statement_, column);
  const int length = sqlite3_column_bytes(statement_, column);
  if (bytes == nullptr) return "";
  return {static_cast<const char*>(bytes), static_cast<std::size_t>(length)};
}

}  // namespace kolum::scan
