// The library of media files: what is known of each, in an SQLite database (docs/library.md has its
// schema and guarantees). Nothing outside the files of this layer knows SQLite.
//
// All functions throw StoreError. A Store is used by one thread at a time; other threads open
// stores of their own for reading. Those see what was committed.
#ifndef KOLUM_SCAN_STORE_H
#define KOLUM_SCAN_STORE_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "scan/errors.h"
#include "scan/query.h"
#include "scan/values.h"

namespace kolum::scan {

class Database;
class StoreLock;

class Store {
 public:
  enum class Access {
    kRead,   // of a library that exists; never waits for a writer
    kWrite,  // makes the library and its folder if they are missing, and migrates an older one
  };

  // VERSION is today's. One process at a time has a library open for writing; for any other,
  // kWrite throws kInUse, whose text names the process. A library of a newer schema throws kNewer.
  Store(const std::string& file, const Version& version, Access access);
  // For kWrite: if the library is in use, waits while KEEPWAITING, which is asked about every 100
  // ms, returns true; then throws kInUse.
  Store(const std::string& file, const Version& version, const std::function<bool()>& keepWaiting);
  // What was not committed is lost.
  ~Store();
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

  // The database's file, with links resolved.
  const std::string& file() const { return file_; }

  // ---- Batches ----
  // Everything between begin() and commit() becomes durable at once, or not at all. commit()
  // returns when it is on the disk. A writing function outside a batch is a batch of its own.
  //
  // If commit() or a writing function throws, call rollback(): of the batch nothing remains (SQLite
  // may have given it up already), and what was committed before is as it was.
  void begin();
  void commit();
  void rollback() noexcept;
  bool isInBatch() const;

  // ---- Marks: files at hand ----
  // A durable mark, replacing an earlier one of that file. Commit before opening the file.
  void markAtHand(const Mark& mark);
  // For a file that was not opened after all. Results take the marks of their files away.
  void unmark(const FilePath& path);
  // After a kill of everything, at the beginning of a scan: files with a mark become suspects, or
  // go into quarantine if they were tried alone. They keep their documents. Returns those marks.
  std::vector<Mark> takeOverMarks();

  // ---- Results ----
  // DOCUMENT is a JSON object as kolum probe prints it; its "schema", "file", "fileBytes", "size"
  // and "modified" are left out. The file's state becomes kKnown, by today's version.
  void putDocument(const FilePath& path, const Identity& identity, std::string_view document);
  // STATE is not kKnown. An earlier document stays.
  void putFailure(const FilePath& path, const Identity& identity, State state,
                  const Reason& reason);
  // A known file has a new name, and maybe a new ctime. Replaces what was known under that name.
  // False if no file has that id.
  bool move(std::int64_t id, const FilePath& to, const Identity& identity);
  // These also remove marks, and folders that hold nothing any more.
  void removeFile(const FilePath& path);
  // Everything in and below a folder. Returns how many files that were.
  std::uint64_t removeTree(const std::string& folder);
  void putRoot(const Root& root);

  // ---- What is known ----
  // With one range query, which reads no document. Empty for an unknown folder.
  KnownFolder folder(const std::string& folder);
  std::optional<Known> file(const FilePath& path);
  // Whether any file is known in or below the folder.
  bool hasFilesBelow(const std::string& folder);
  // The names of one file, LIMIT at most: it may have moved, or have hard links.
  std::vector<KnownFile> filesWithInode(std::uint64_t device, std::uint64_t inode,
                                        std::size_t limit);
  // At most LIMIT files of that state with ids greater than AFTER, in the order of ids.
  std::vector<KnownFile> filesInState(State state, std::size_t limit, std::int64_t after = 0);
  // Marks of this moment.
  std::vector<Mark> marks();
  std::vector<Root> roots();
  Counts counts();
  // Files by the name of their documents' kind ("video", "music", "photo").
  std::vector<std::pair<std::string, std::uint64_t>> countsByKind();

  // ---- Queries of people ----
  // Calls VISIT, which must not use the store, for every file that fits, by folders and names.
  // Expressions need a store that was opened with kRead.
  void forEachFile(const FileQuery& query, const std::function<void(const FoundFile&)>& visit);

 private:
  void openAsWriter(const std::string& file, const std::function<bool()>& keepWaiting);
  // All of WORK, or nothing of it.
  void write(const std::function<void()>& work);
  void forgetIds() noexcept;

  std::optional<std::int64_t> folderId(const std::string& folder);
  std::int64_t madeFolderId(const std::string& folder);
  std::int64_t insertFolder(const std::string& folder, std::optional<std::int64_t> parent);
  void removeEmptyFolders(std::string folder);
  void removeMark(const FilePath& path);
  std::int64_t versionId();
  std::int64_t putFile(const FilePath& path, const Identity& identity, State state,
                       const Reason* reason);
  std::string cleaned(std::string_view document);

  const Version version_;
  std::string file_;
  std::unique_ptr<StoreLock> lock_;  // of a writer
  std::unique_ptr<Database> database_;
  // Known in this batch or committed.
  std::map<std::string, std::int64_t> folderIds_;
  std::int64_t versionId_ = 0;  // of version_; 0 if it is not looked up yet
};

}  // namespace kolum::scan

#endif
