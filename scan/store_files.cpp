// Files: what was found in them, and the marks of those that are at hand.
#include <ctime>

#include "base/utf8.h"
#include "scan/statements.h"
#include "scan/store.h"

namespace kolum::scan {

namespace {

using Kind = StoreError::Kind;

// Real documents take some kilobytes.
constexpr std::size_t kLargestDocument = std::size_t{1} << 20;

// What takeOverMarks() says about files.
const Reason kInterrupted = {"interrupted", "the scan was killed while this file was open"};
const Reason kInterruptedAlone = {
    "interrupted", "the scan was killed while this file was open, twice; the second time alone"};

// Its columns: id, path of the folder, name, state, version, identity.
constexpr const char* kByInode =
    "SELECT file.id, folder.path, name, state, version, file.device, inode, size, mtime_ns,"
    " ctime_ns FROM file JOIN folder ON folder.id = file.folder"
    " WHERE inode = ? AND file.device = ? ORDER BY file.id LIMIT ?";
constexpr const char* kInState =
    "SELECT file.id, folder.path, name, state, version, file.device, inode, size, mtime_ns,"
    " ctime_ns FROM file JOIN folder ON folder.id = file.folder"
    " WHERE state = ? AND file.id > ? ORDER BY file.id LIMIT ?";
constexpr const char* kByPath =
    "SELECT file.id, folder.path, name, state, version, file.device, inode, size, mtime_ns,"
    " ctime_ns FROM file JOIN folder ON folder.id = file.folder WHERE path = ? AND name = ?";

std::vector<KnownFile> knownFiles(Run& run, std::int64_t today) {
  std::vector<KnownFile> files;
  while (run.next()) {
    files.push_back({run.text(1),
                     {run.number(0), run.text(2), identityAt(run, 5),
                      static_cast<State>(run.number(3)), run.number(4) == today}});
  }
  return files;
}

[[noreturn]] void refuseDocument(const std::string& why) {
  throw StoreError(Kind::kBadDocument, "not a document: " + why);
}

}  // namespace

// Readers may meet a version that is not in the database: 0 stands for none.
std::int64_t Store::versionId() {
  if (versionId_ != 0) return versionId_;
  Run known(*database_, "SELECT id FROM version WHERE schema = ? AND readers = ?", version_.schema,
            std::string_view(version_.readers));
  if (known.next()) versionId_ = known.number(0);
  return versionId_;
}

void Store::markAtHand(const Mark& mark) {
  write([&] {
    Run run(*database_,
            "INSERT OR REPLACE INTO at_hand"
            " (folder, name, device, inode, size, mtime_ns, ctime_ns, alone)"
            " VALUES (?, ?, ?, ?, ?, ?, ?, ?)");
    bindPath(run, mark.path);
    bindIdentity(run, mark.identity);
    run.bind(mark.isAlone ? 1 : 0);
    run.finish();
  });
}

void Store::removeMark(const FilePath& path) {
  Run run(*database_, "DELETE FROM at_hand WHERE folder = ? AND name = ?");
  bindPath(run, path);
  run.finish();
}

void Store::unmark(const FilePath& path) {
  write([&] { removeMark(path); });
}

std::vector<Mark> Store::marks() {
  std::vector<Mark> marks;
  Run run(*database_,
          "SELECT folder, name, alone, device, inode, size, mtime_ns, ctime_ns FROM at_hand");
  while (run.next())
    marks.push_back({{run.text(0), run.text(1)}, identityAt(run, 3), run.number(2) != 0});
  return marks;
}

std::vector<Mark> Store::takeOverMarks() {
  std::vector<Mark> left = marks();
  if (left.empty()) return left;
  write([&] {
    for (const Mark& mark : left) {
      if (mark.isAlone) {
        putFailure(mark.path, mark.identity, State::kQuarantined, kInterruptedAlone);
      } else {
        putFailure(mark.path, mark.identity, State::kSuspect, kInterrupted);
      }
    }
  });
  return left;
}

// Returns the file's id.
std::int64_t Store::putFile(const FilePath& path, const Identity& identity, State state,
                            const Reason* reason) {
  if (versionId() == 0) {
    Run(*database_, "INSERT INTO version (schema, readers) VALUES (?, ?)", version_.schema,
        std::string_view(version_.readers))
        .finish();
  }
  removeMark(path);
  Run run(*database_,
          "INSERT INTO file (folder, name, device, inode, size, mtime_ns, ctime_ns, version,"
          " state, looked_at, code, reason) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"
          " ON CONFLICT (folder, name) DO UPDATE SET device = excluded.device,"
          " inode = excluded.inode, size = excluded.size, mtime_ns = excluded.mtime_ns,"
          " ctime_ns = excluded.ctime_ns, version = excluded.version, state = excluded.state,"
          " looked_at = excluded.looked_at, code = excluded.code, reason = excluded.reason"
          " RETURNING id",
          madeFolderId(path.folder), Bytes{path.name});
  bindIdentity(run, identity);
  run.bind(versionId());
  run.bind(static_cast<int>(state));
  run.bind(std::time(nullptr));
  if (reason != nullptr) {
    run.bind(std::string_view(reason->code));
    run.bind(std::string_view(reason->text));
  }
  run.next();
  const std::int64_t id = run.number(0);
  run.finish();
  return id;
}

// Without what the library knows better: where the file is, its size and its last change.
std::string Store::cleaned(std::string_view document) {
  if (document.size() > kLargestDocument)
    refuseDocument("larger than " + std::to_string(kLargestDocument) + " bytes");
  if (!isUtf8(document) || document.find('\0') != std::string_view::npos)
    refuseDocument("not UTF-8");
  Run run(*database_,
          "SELECT json_remove(?1, '$.schema', '$.file', '$.fileBytes', '$.size', '$.modified')"
          " WHERE json_valid(?1) AND json_type(?1) = 'object'",
          document);
  if (!run.next()) refuseDocument("not a JSON object");
  return run.text(0);
}

void Store::putDocument(const FilePath& path, const Identity& identity, std::string_view document) {
  const std::string json = cleaned(document);
  write([&] {
    const std::int64_t id = putFile(path, identity, State::kKnown, nullptr);
    Run(*database_,
        "INSERT OR REPLACE INTO document (file, version, size, mtime_ns, json, kind)"
        " VALUES (?1, ?2, ?3, ?4, ?5, json_extract(?5, '$.kind.name'))",
        id, versionId(), identity.size, identity.mtimeNs, std::string_view(json))
        .finish();
  });
}

void Store::putFailure(const FilePath& path, const Identity& identity, State state,
                       const Reason& reason) {
  write([&] { putFile(path, identity, state, &reason); });
}

bool Store::move(std::int64_t id, const FilePath& to, const Identity& identity) {
  bool isKnown = false;
  write([&] {
    FilePath from;
    {
      Run run(*database_,
              "SELECT path, name FROM file JOIN folder ON folder.id = file.folder"
              " WHERE file.id = ?",
              id);
      isKnown = run.next();
      if (!isKnown) return;
      from = {run.text(0), run.text(1)};
    }
    removeMark(from);
    removeMark(to);
    const std::int64_t folder = madeFolderId(to.folder);
    Run(*database_, "DELETE FROM file WHERE folder = ? AND name = ? AND id <> ?", folder,
        Bytes{to.name}, id)
        .finish();
    Run run(*database_,
            "UPDATE file SET folder = ?, name = ?, device = ?, inode = ?, size = ?, mtime_ns = ?,"
            " ctime_ns = ? WHERE id = ?",
            folder, Bytes{to.name});
    bindIdentity(run, identity);
    run.bind(id);
    run.finish();
    if (from.folder != to.folder) removeEmptyFolders(from.folder);
  });
  return isKnown;
}

void Store::removeFile(const FilePath& path) {
  write([&] {
    removeMark(path);
    const auto folder = folderId(path.folder);
    if (!folder) return;
    Run(*database_, "DELETE FROM file WHERE folder = ? AND name = ?", *folder, Bytes{path.name})
        .finish();
    removeEmptyFolders(path.folder);
  });
}

std::optional<Known> Store::file(const FilePath& path) {
  Run run(*database_, kByPath);
  bindPath(run, path);
  const std::vector<KnownFile> found = knownFiles(run, versionId());
  return found.empty() ? std::nullopt : std::optional(found.front().known);
}

std::vector<KnownFile> Store::filesWithInode(std::uint64_t device, std::uint64_t inode,
                                             std::size_t limit) {
  Run run(*database_, kByInode, inode, device, limit);
  return knownFiles(run, versionId());
}

std::vector<KnownFile> Store::filesInState(State state, std::size_t limit, std::int64_t after) {
  Run run(*database_, kInState, static_cast<int>(state), after, limit);
  return knownFiles(run, versionId());
}

}  // namespace kolum::scan
