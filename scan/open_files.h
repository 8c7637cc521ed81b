// Which files a scan has open at this moment, noted so that the next scan knows it even if this one
// is killed: in a small file beside the library that is mapped into memory. Writing there costs no
// more than writing to memory.
//
// Marks in the library say the same, and survive a power cut, but must be written long before a
// file is opened. With this, only files that really were open fall under suspicion.
#ifndef KOLUM_SCAN_OPEN_FILES_H
#define KOLUM_SCAN_OPEN_FILES_H

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace kolum::scan {

class OpenFiles {
 public:
  // Of a file's path: the table has room for no more.
  using Hash = std::uint64_t;
  static Hash hashOf(std::string_view path);

  // What was open when the last scan of this library was killed: nothing if it was not. Empty if
  // that is unknown: the machine was started anew since then, or there was no room for the note.
  static std::optional<std::set<Hash>> left(const std::string& library);

  // Makes the file anew, for the process that has the library open for writing.
  explicit OpenFiles(const std::string& library);
  // Removes it.
  ~OpenFiles();
  OpenFiles(const OpenFiles&) = delete;
  OpenFiles& operator=(const OpenFiles&) = delete;

  // While it exists, the file counts as open. Any thread.
  class Note {
   public:
    Note(OpenFiles& files, std::string_view path);
    ~Note();
    Note(const Note&) = delete;
    Note& operator=(const Note&) = delete;

   private:
    OpenFiles& files_;
    std::size_t slot_;
  };

  // More than there are threads.
  static constexpr std::size_t kSlots = 1000;

 private:
  struct Table;

  std::string name_;
  Table* table_ = nullptr;  // null if there is no room; then everything counts as open
  std::array<std::atomic<bool>, kSlots> isTaken_ = {};
};

}  // namespace kolum::scan

#endif
