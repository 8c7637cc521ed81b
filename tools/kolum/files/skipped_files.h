// Counts the skipped files of a folder by their extensions.
#ifndef KOLUM_TOOL_FILES_SKIPPED_FILES_H
#define KOLUM_TOOL_FILES_SKIPPED_FILES_H

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace kolum::tool {

class SkippedFiles {
 public:
  void add(std::string_view name);
  bool areNone() const { return count_ == 0; }
  // "3 files skipped (2 .heic, 1 .webm)".
  std::string text() const;

 private:
  std::size_t count_ = 0;
  std::map<std::string, std::size_t> byExtension_;
};

}  // namespace kolum::tool

#endif
