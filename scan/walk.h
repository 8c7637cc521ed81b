// What is in the folders beneath a root: a walk by descriptors, in steps of one folder each.
//
// A walk has two parts, so that a folder that hangs (on a server that does not answer) costs no
// more than the thread that reads it: PendingFolders knows what remains to be read and never waits;
// readFolder() reads one folder, may wait for ever, and shares nothing but its arguments.
#ifndef KOLUM_SCAN_WALK_H
#define KOLUM_SCAN_WALK_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/descriptor.h"
#include "scan/beneath.h"
#include "scan/values.h"

namespace kolum::scan {

// Which entries count, decided by their names alone. FOLDER is relative to the root: "" or "a/b/".
// Must not throw; any thread may call it.
struct Selection {
  std::function<bool(std::string_view folder, const std::string& name)> countsFile;
  std::function<bool(std::string_view folder, const std::string& name)> entersFolder;
};

// Whether a walk with this selection comes to a file or folder (whose path ends with "/").
bool isReached(const Selection& selection, std::string_view path);

struct SeenFile {
  std::string name;
  Identity identity;
  int error = 0;  // of stat; then IDENTITY means nothing
};

// Some of the entries of a folder; large folders come in several pieces.
struct Piece {
  std::string folder;  // relative to the root: "" or "a/b/"
  std::uint64_t device = 0;
  std::vector<SeenFile> files;
  std::vector<std::string> folders;  // names of the folders in it that will be entered
  bool isLast = false;
  // Of a last piece: why the folder was not read, or not to its end; 0 if it was.
  int error = 0;
};

// What readFolder() found out about a folder as a whole.
struct FolderEnd {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::vector<std::string> folders;  // to be entered, in the order of the walk
  std::uint64_t links = 0;           // symbolic links, which are not followed
};

// The folders of a root that remain to be read, depth first. Grows with the number of folders
// beside the path to the present one, not with the number of files.
class PendingFolders {
 public:
  // Begins with FIRST: "" for the root. Without RECURSIVE that is all.
  explicit PendingFolders(std::string first = "", bool isRecursive = true)
      : first_(std::move(first)), isRecursive_(isRecursive) {}

  // The folder to read next; empty at the end.
  std::optional<std::string> next();
  // What is in the folder that next() returned last. False if that folder contains itself (a loop
  // of mounts), so that it is not entered; or if a path in it would be longer than kLongestPath.
  bool enter(FolderEnd&& end);

  // Of a folder's path below its root. Deeper trees are an attack: people's file systems and
  // programs end at 4096 bytes.
  static constexpr std::size_t kLongestPath = 65536;

 private:
  struct Level {
    std::size_t length;  // of its path
    std::uint64_t device;
    std::uint64_t inode;
    std::vector<std::string> folders;  // in reverse order
  };

  std::string first_;
  bool isRecursive_;
  bool hasBegun_ = false;
  std::string path_;  // that next() returned last
  std::vector<Level> levels_;
};

// How the reader of a folder and whoever watches over it communicate.
struct Pulse {
  std::atomic<std::uint64_t> beats{0};    // counts entries; a reader that hangs counts no more
  std::atomic<bool> isStopWanted{false};  // the reader then stops at the next entry
};

struct ReadOptions {
  // Rotating disks are read in the order of the inodes. Otherwise sub-folders come in byte order,
  // files in the order of the folder.
  bool isByInode = false;
  // Entries are listed, but not looked at: identities stay empty, and what has no type without a
  // look is left out.
  bool isNamesOnly = false;
  std::size_t pieceSize = 512;
  Beneath::Way way = Beneath::Way::kAny;
};

// Reads the folder at PATH beneath ROOT. Each file that counts costs one fstatat(), and what does
// not count costs none; links are never followed. In the folder of a DVD or a Blu-ray disc only the
// index file counts, as for "kolum probe", and of its sub-folders only the index file's.
//
// One reader reads one folder after the other; it keeps two descriptors: the root's, and that of
// the folder that was read last, so that a deep path needs not be opened from its beginning.
class FolderReader {
 public:
  // ROOT: any descriptor of the root, kept open by this.
  FolderReader(std::shared_ptr<const Descriptor> root, std::shared_ptr<Pulse> pulse,
               Selection selection, ReadOptions options);

  // VISIT gets at least one piece, the last one with isLast, unless it returns false or the pulse
  // says so, which ends reading. Empty if that happened, or if the folder could not be opened.
  std::optional<FolderEnd> read(const std::string& path, const std::function<bool(Piece&&)>& visit);

 private:
  Descriptor open(const std::string& path) const;

  std::shared_ptr<const Descriptor> root_;
  std::shared_ptr<Pulse> pulse_;
  Selection selection_;
  ReadOptions options_;
  Descriptor last_;
  std::string lastPath_;
};

}  // namespace kolum::scan

#endif
