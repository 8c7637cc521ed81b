#include "scan/store.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "scan/database.h"
#include "scan/schema.h"
#include "scan/store_lock.h"

namespace kolum::scan {

namespace {

using Kind = StoreError::Kind;

// With links resolved, so that all names of a library lead to the same lock. The file need not
// exist; its folder must.
std::string resolved(const std::string& file) {
  namespace fs = std::filesystem;
  char path[PATH_MAX];
  if (realpath(file.c_str(), path) != nullptr) return path;
  const fs::path given(file);
  const fs::path folder = given.has_parent_path() ? given.parent_path() : fs::path(".");
  if (errno != ENOENT || !given.has_filename() || realpath(folder.c_str(), path) == nullptr)
    throw StoreError(Kind::kCannotOpen, file + ": " + std::strerror(errno));
  return (fs::path(path) / given.filename()).string();
}

void makeFolderOf(const std::string& file) {
  const std::filesystem::path folder = std::filesystem::path(file).parent_path();
  std::error_code error;
  if (folder.empty() || std::filesystem::exists(folder, error)) return;
  std::filesystem::create_directories(folder, error);
  if (!error) return;
  const bool isReadOnly =
      error.value() == EROFS || error.value() == EACCES || error.value() == EPERM;
  throw StoreError(isReadOnly ? Kind::kReadOnly : Kind::kCannotOpen,
                   folder.string() + ": " + error.message());
}

// Whether SQLite could not read because it may not make the files that it shares with writers.
bool needsWriting(const StoreError& error) {
  return error.kind() == Kind::kReadOnly || error.kind() == Kind::kCannotOpen;
}

// Whether all that was committed is in the database itself.
bool hasNoLog(const std::string& file) {
  struct stat status = {};
  return stat((file + "-wal").c_str(), &status) != 0 || status.st_size == 0;
}

void requirePresent(Database& database) {
  switch (contentOf(database)) {
    case Content::kPresent:
      return checkSchema(database);
    case Content::kOlder:
      throw StoreError(Kind::kOther, database.file() +
                                         ": made by an earlier kolum; the next \"kolum scan\" or "
                                         "\"kolum library add\" brings it up to date");
    case Content::kNothing:
      throw StoreError(Kind::kMissing, database.file() + ": empty, nothing was scanned yet");
  }
}

void requireFile(const std::string& file) {
  if (access(file.c_str(), F_OK) == 0 || (errno != ENOENT && errno != ENOTDIR)) return;
  throw StoreError(Kind::kMissing, file + ": there is no library yet; \"kolum scan\" makes it");
}

// A writer may be making the library at this moment.
std::unique_ptr<Database> openForReading(const std::string& file, Database::Mode mode) {
  auto database = std::make_unique<Database>(file, mode);
  database->atOneMoment([&] { requirePresent(*database); });
  return database;
}

std::unique_ptr<Database> openForReading(const std::string& file) {
  try {
    return openForReading(file, Database::Mode::kRead);
  } catch (const StoreError& error) {
    if (!needsWriting(error) || !hasNoLog(file)) throw;
  }
  return openForReading(file, Database::Mode::kImmutable);
}

void requireLog(Database& database) {
  Run mode(database, "PRAGMA journal_mode = WAL");
  if (!mode.next() || mode.text(0) != "wal")
    throw StoreError(Kind::kOther, database.file() + ": this file system cannot hold a library");
}

std::unique_ptr<Database> openForWriting(const std::string& file) {
  auto database = std::make_unique<Database>(file, Database::Mode::kWrite);
  // SQLite would rather read than fail.
  if (sqlite3_db_readonly(database->handle(), "main") == 1)
    throw StoreError(Kind::kReadOnly, file + ": cannot be written");
  const Content content = contentOf(*database);
  requireLog(*database);
  database->execute("PRAGMA synchronous = FULL");
  if (content != Content::kPresent) migrate(*database);
  checkSchema(*database);
  return database;
}

}  // namespace

Store::Store(const std::string& file, const Version& version, Access access) : version_(version) {
  if (access == Access::kRead) {
    requireFile(file);
    file_ = resolved(file);
    database_ = openForReading(file_);
  } else {
    openAsWriter(file, {});
  }
}

Store::Store(const std::string& file, const Version& version,
             const std::function<bool()>& keepWaiting)
    : version_(version) {
  openAsWriter(file, keepWaiting);
}

Store::~Store() {
  if (database_ != nullptr) database_->rollback();
}

void Store::openAsWriter(const std::string& file, const std::function<bool()>& keepWaiting) {
  makeFolderOf(file);
  file_ = resolved(file);
  lock_ = std::make_unique<StoreLock>(file_, keepWaiting);
  database_ = openForWriting(file_);
}

void Store::begin() {
  Run(*database_, "BEGIN IMMEDIATE").finish();
}

void Store::commit() {
  Run(*database_, "COMMIT").finish();
}

void Store::rollback() noexcept {
  database_->rollback();
  forgetIds();
}

bool Store::isInBatch() const {
  return database_->isInTransaction();
}

void Store::write(const std::function<void()>& work) {
  try {
    database_->atomically(work);
  } catch (...) {
    forgetIds();
    throw;
  }
}

// What the ids stand for may never have been committed.
void Store::forgetIds() noexcept {
  folderIds_.clear();
  versionId_ = 0;
}

}  // namespace kolum::scan
