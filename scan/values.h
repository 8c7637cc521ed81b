// Files as a scan sees them and as a library knows them: plain values.
#ifndef KOLUM_SCAN_VALUES_H
#define KOLUM_SCAN_VALUES_H

#include <sys/stat.h>

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kolum::scan {

// What says that a file is still the same. Only ever compared for equality: the clocks of shares
// differ, so no time is "newer" than another.
struct Identity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t size = 0;     // bytes
  std::int64_t mtimeNs = 0;  // nanoseconds since 1970
  std::int64_t ctimeNs = 0;

  bool operator==(const Identity&) const = default;
};

// Wraps around for years that 64 bits of nanoseconds cannot hold (before 1678 and after 2262),
// which equality survives.
inline std::int64_t nanoseconds(std::int64_t seconds, std::int64_t nanosecond) {
  constexpr std::uint64_t kPerSecond = 1000000000;
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(seconds) * kPerSecond +
                                   static_cast<std::uint64_t>(nanosecond));
}

inline std::int64_t nanoseconds(const timespec& time) {
  return nanoseconds(time.tv_sec, time.tv_nsec);
}

inline Identity identityOf(const struct stat& status) {
  return {status.st_dev, status.st_ino, status.st_size, nanoseconds(status.st_mtim),
          nanoseconds(status.st_ctim)};
}

// FOLDER is absolute, without "." and "..", and ends with "/", as "/share/Music/" and "/" do. Names
// hold any bytes but "/" and NUL.
struct FilePath {
  std::string folder;
  std::string name;

  std::string full() const { return folder + name; }
  bool operator==(const FilePath&) const = default;
};

// What made the documents: if either differs from today's, they are read anew.
struct Version {
  int schema = 0;       // the number of the documents' format
  std::string readers;  // any text that changes when the readers' answers may
};

// The numbers are stored: none may change.
enum class State {
  kKnown = 0,        // described by its document
  kFailed = 1,       // an ordinary failure: not media, damaged, not readable
  kSuspect = 2,      // ended a worker, took too long, or was open when everything was killed
  kQuarantined = 3,  // did so again when it was tried alone
};

// Why a file has no document, or an old one: a code for programs, the reason for people.
struct Reason {
  std::string code;
  std::string text;
};

// A file that the library knows.
struct Known {
  std::int64_t id = 0;  // stays the same when the file moves
  std::string name;
  Identity identity;  // at the last look at it, whether that succeeded or not
  State state = State::kKnown;
  bool isCurrent = false;  // that look was by today's version
};

// Whether nothing of the file needs to be read. Its state does not matter: a file that failed, or
// is in quarantine, is not tried again until it changes.
inline bool isUnchanged(const Known& known, const Identity& seen) {
  return known.isCurrent && known.identity == seen;
}

struct KnownFile {
  std::string folder;
  Known known;

  FilePath path() const { return {folder, known.name}; }
};

// What the library knows of one folder.
struct KnownFolder {
  std::vector<Known> files;          // in byte order of their names
  std::vector<std::string> folders;  // the names of known folders in it
};

// A file that was about to be opened.
struct Mark {
  FilePath path;
  Identity identity;
  bool isAlone = false;  // a suspect, tried with nothing beside it
};

// A folder that was given to a scan.
struct Root {
  std::string folder;
  std::uint64_t device = 0;
  std::int64_t scannedAt = 0;  // seconds since 1970; when the last whole walk of it ended
};

struct Counts {
  std::uint64_t known = 0;
  std::uint64_t failed = 0;
  std::uint64_t suspect = 0;
  std::uint64_t quarantined = 0;
  std::uint64_t documents = 0;  // failures may have an earlier one
  std::uint64_t folders = 0;

  std::uint64_t files() const { return known + failed + suspect + quarantined; }
};

}  // namespace kolum::scan

#endif
