// Folders: their rows, the trees of files below them, and the roots of scans.
#include <algorithm>

#include "base/utf8.h"
#include "scan/statements.h"
#include "scan/store.h"

namespace kolum::scan {

namespace {

constexpr std::size_t kKeptIds = 1000;

// "/share/" for "/share/Music/"; empty for "/".
std::string parentOf(const std::string& folder) {
  if (folder.size() < 2) return "";
  return folder.substr(0, folder.rfind('/', folder.size() - 2) + 1);
}

// "Music" for "/share/Music/".
std::string nameOf(const std::string& folder) {
  return folder.substr(parentOf(folder).size(), folder.size() - parentOf(folder).size() - 1);
}

// Runs a statement with the bounds of the tree, once for paths that are blobs and once for those
// that are text: children first, so that no folder loses its parent.
template <typename Visit>
void forTree(Database& database, const char* sql, const std::string& folder, const Visit& visit) {
  const std::string end = endOfTree(folder);
  {
    Run blobs(database, sql, Blob{folder}, Blob{end});
    visit(blobs);
  }
  if (!isUtf8(folder)) return;
  Run texts(database, sql, std::string_view(folder), std::string_view(end));
  visit(texts);
}

}  // namespace

std::optional<std::int64_t> Store::folderId(const std::string& folder) {
  if (const auto kept = folderIds_.find(folder); kept != folderIds_.end()) return kept->second;
  Run run(*database_, "SELECT id FROM folder WHERE path = ?", Bytes{folder});
  if (!run.next()) return std::nullopt;
  if (folderIds_.size() >= kKeptIds) folderIds_.clear();
  folderIds_[folder] = run.number(0);
  return run.number(0);
}

std::int64_t Store::madeFolderId(const std::string& folder) {
  // From the folder up to the nearest one that is known, and down again: trees may be deeper than
  // any stack.
  std::vector<std::string> missing;
  std::optional<std::int64_t> id;
  for (std::string at = folder; !at.empty() && !(id = folderId(at)); at = parentOf(at))
    missing.push_back(at);
  for (; !missing.empty(); missing.pop_back()) id = insertFolder(missing.back(), id);
  return *id;
}

std::int64_t Store::insertFolder(const std::string& folder, std::optional<std::int64_t> parent) {
  Run run(*database_, "INSERT INTO folder (path, parent) VALUES (?, ?) RETURNING id",
          Bytes{folder});
  if (parent) run.bind(*parent);
  run.next();
  const std::int64_t id = run.number(0);
  run.finish();
  return folderIds_[folder] = id;
}

void Store::removeEmptyFolders(std::string folder) {
  constexpr const char* kRemove =
      "DELETE FROM folder WHERE path = ?"
      " AND NOT EXISTS (SELECT 1 FROM file WHERE file.folder = folder.id)"
      " AND NOT EXISTS (SELECT 1 FROM folder AS child WHERE child.parent = folder.id)";
  for (; !folder.empty(); folder = parentOf(folder)) {
    Run(*database_, kRemove, Bytes{folder}).finish();
    if (sqlite3_changes(database_->handle()) == 0) break;
    folderIds_.erase(folder);
  }
}

std::uint64_t Store::removeTree(const std::string& folder) {
  std::uint64_t removed = 0;
  write([&] {
    forTree(*database_,
            "DELETE FROM file WHERE folder IN"
            " (SELECT id FROM folder WHERE path >= ? AND path < ?)",
            folder, [&](Run& run) {
              run.finish();
              removed += static_cast<std::uint64_t>(sqlite3_changes64(database_->handle()));
            });
    forTree(*database_, "DELETE FROM folder WHERE path >= ? AND path < ?", folder,
            [](Run& run) { run.finish(); });
    forTree(*database_, "DELETE FROM at_hand WHERE folder >= ? AND folder < ?", folder,
            [](Run& run) { run.finish(); });
    folderIds_.clear();
    removeEmptyFolders(parentOf(folder));
  });
  return removed;
}

void Store::putRoot(const Root& root) {
  write([&] {
    Run(*database_, "INSERT OR REPLACE INTO root (folder, device, scanned_at) VALUES (?, ?, ?)",
        Bytes{root.folder}, root.device, root.scannedAt)
        .finish();
  });
}

std::vector<Root> Store::roots() {
  std::vector<Root> roots;
  Run run(*database_, "SELECT folder, device, scanned_at FROM root ORDER BY folder");
  while (run.next()) roots.push_back({run.text(0), run.bits(1), run.number(2)});
  return roots;
}

KnownFolder Store::folder(const std::string& folder) {
  KnownFolder known;
  Run self(*database_, "SELECT id FROM folder WHERE path = ?", Bytes{folder});
  if (!self.next()) return known;
  const std::int64_t id = self.number(0);
  const std::int64_t today = versionId();
  Run files(*database_,
            "SELECT id, name, state, version, device, inode, size, mtime_ns, ctime_ns"
            " FROM file WHERE folder = ?",
            id);
  while (files.next()) {
    known.files.push_back({files.number(0), files.text(1), identityAt(files, 4),
                           static_cast<State>(files.number(2)), files.number(3) == today});
  }
  // SQLite puts text before blobs.
  const auto byName = [](const Known& a, const Known& b) { return a.name < b.name; };
  if (!std::is_sorted(known.files.begin(), known.files.end(), byName))
    std::sort(known.files.begin(), known.files.end(), byName);
  Run folders(*database_, "SELECT path FROM folder WHERE parent = ?", id);
  while (folders.next()) known.folders.push_back(nameOf(folders.text(0)));
  return known;
}

bool Store::hasFilesBelow(const std::string& folder) {
  bool hasFiles = false;
  forTree(*database_,
          "SELECT EXISTS (SELECT 1 FROM folder JOIN file ON file.folder = folder.id"
          " WHERE path >= ? AND path < ?)",
          folder, [&](Run& run) { hasFiles = hasFiles || (run.next() && run.number(0) != 0); });
  return hasFiles;
}

}  // namespace kolum::scan
