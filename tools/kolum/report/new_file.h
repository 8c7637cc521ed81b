// A file that appears under its name when it is complete, and not before.
#ifndef KOLUM_TOOL_REPORT_NEW_FILE_H
#define KOLUM_TOOL_REPORT_NEW_FILE_H

#include <stdexcept>
#include <string>
#include <string_view>

#include "base/descriptor.h"

namespace kolum::tool {

// Why a file could not be written, in words.
class FileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Every step throws FileError. Without commit(), nothing stays behind, and an earlier file of that
// name is as it was. Only its owner may read it, whatever the earlier one allowed.
class NewFile {
 public:
  // A link is followed. Anything that exists there must be a plain file.
  explicit NewFile(const std::string& path);
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  void write(std::string_view text);
  void commit();

 private:
  std::string path_;
  std::string temporary_;  // empty if there is none
  Descriptor file_;
};

}  // namespace kolum::tool

#endif
